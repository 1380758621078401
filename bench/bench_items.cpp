#include "app/base/ports/data_window.h"
#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/paint_watch.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "core/data_records.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/report_list.h"

#include <QCoreApplication>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

/// The links and memberships of data, each found in one pass over its table: no index of the file leads to them.
class Relations
{
public:
    explicit Relations(const BareDatabase& database)
        : m_links(database, "SELECT Link_Object_ID, Object_ID FROM Link "
                            "WHERE Object_ID = ?1 OR Link_Object_ID = ?1"),
          m_memberships(database, "SELECT Category_ID FROM Category WHERE Object_ID = ?1")
    {
    }

    int readLinks(const QString& identifier)
    {
        m_links.bind(1, identifier);
        return readAll(m_links, 2);
    }
    int readMemberships(const QString& identifier)
    {
        m_memberships.bind(1, identifier);
        return readAll(m_memberships, 1);
    }

private:
    BareStatement m_links;
    BareStatement m_memberships;
};

/// Opens a definition as a double click in the data list does, up to its painted lists.
void openItem(QuietProgram& program, const QString& identifier, int links, int memberships)
{
    ShowData(program.session(), identifier);
    auto& window = dynamic_cast<FormWindow&>(*program.session().windows.loaded().back());
    const auto& linkList = *window.findChild<ReportList*>(u"lsvLink"_s);
    const auto& categoryList = *window.findChild<ReportList*>(u"lsvCategory"_s);
    const PaintWatch linkWatch(*linkList.viewport());
    const PaintWatch categoryWatch(*categoryList.viewport());
    QCoreApplication::processEvents();
    if (window.asDataWindow()->fieldText(1) != identifier || linkList.rows().rowCount() != links ||
        categoryList.rows().rowCount() != memberships)
        throw std::runtime_error("another item was opened");
    if (!linkWatch.painted() || !categoryWatch.painted())
        throw std::runtime_error("the item was not painted");
}

/// Opens one item after the other, in turn with the floor.
void measureOpening(benchmark::State& state, const RowText& text, const QStringList& identifiers)
{
    QuietProgram program;
    program.open(corpusPath(Corpus::Default));
    const BareDatabase database(corpusPath(Corpus::Default));
    Relations relations(database);
    qsizetype next = 0;
    qsizetype nextOfFloor = 0;
    int links = 0;
    int memberships = 0;
    measure(state, text,
            {.prepare =
                 [&] {
                     program.closeOtherWindows();
                     next = (next + 1) % identifiers.size();
                     links = relations.readLinks(identifiers[next]);
                     memberships = relations.readMemberships(identifiers[next]);
                 },
             .operation = [&] { openItem(program, identifiers[next], links, memberships); },
             .prepareFloor = [&] { nextOfFloor = (nextOfFloor + 1) % identifiers.size(); },
             .floor =
                 [&] {
                     relations.readLinks(identifiers[nextOfFloor]);
                     relations.readMemberships(identifiers[nextOfFloor]);
                 }});
}

QStringList identifiersFrom(const char* sql)
{
    const BareDatabase database(corpusPath(Corpus::Default));
    BareStatement statement(database, sql);
    QStringList identifiers;
    while (statement.step())
        identifiers << statement.text(0).toString();
    return identifiers;
}

void openingItem(benchmark::State& state)
{
    measureOpening(state,
                   {"Opening an item with its links and categories, until painted",
                    "finding its rows in Link and Category, a pass over each", 2},
                   identifiersFrom("SELECT Object_ID FROM Main WHERE rowid % 2500 = 1"));
}
BENCHMARK(openingItem)->UseManualTime()->Iterations(41);

void openingLinkedItem(benchmark::State& state)
{
    const QStringList identifiers = identifiersFrom(
        "SELECT Object_ID FROM (SELECT Object_ID FROM Link UNION ALL SELECT Link_Object_ID FROM Link) "
        "WHERE Object_ID >= 'M-' GROUP BY 1 ORDER BY count(*) DESC LIMIT 1");
    measureOpening(
        state,
        {"Opening the item with the most links (819), until painted", "finding them in the same way", 2},
        identifiers);
}
BENCHMARK(openingLinkedItem)->UseManualTime()->Iterations(41);

} // namespace

} // namespace quillon::bench
