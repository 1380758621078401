#include "app/base/ports/data_window.h"
#include "bench/bare_database.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "bench/working_copies.h"
#include "core/categories.h"
#include "core/data_records.h"
#include "core/links.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/report_list.h"

#include <QAction>
#include <QCoreApplication>
#include <QHeaderView>

#include <initializer_list>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

constexpr int Writes = 51;

const QString Name = u"蒸留水の製法"_s;
const QString Definition = u"水を熱して得た蒸気を冷やし、再び液体にしたもの。不純物をほとんど含まない。"_s;

void run(const BareDatabase& database, const char* sql)
{
    BareStatement(database, sql).step();
}

/// Runs a statement of its own transaction.
void write(BareStatement& statement, std::initializer_list<QString> values)
{
    int position = 0;
    for (const QString& value : values)
        statement.bind(++position, value);
    statement.step();
    statement.reset();
}

/// The program and a bare database, each with a copy of the corpus of its own.
class Writing
{
public:
    Writing() : bare(workingCopies().floors)
    {
        program.open(workingCopies().programs);
        // As durable as the program, and with as much memory.
        for (const char* setting :
             {"PRAGMA synchronous = EXTRA", "PRAGMA cache_size = -8192", "PRAGMA temp_store = MEMORY"})
            run(bare, setting);
    }

    Session& session() { return program.session(); }
    DataWindow& newestWindow() { return dynamic_cast<DataWindow&>(*session().windows.loaded().back()); }
    /// Chooses an entry of the newest window's menus.
    void choose(const QString& entry)
    {
        dynamic_cast<FormWindow&>(newestWindow()).findChild<QAction*>(entry)->trigger();
    }
    /// Lets the disk rest before the bare write for about as long as before the program's, which follows the opening of a
    /// window: what is written right behind something else is written faster.
    void rest(const QString& identifier)
    {
        program.closeOtherWindows();
        ShowData(session(), identifier);
        QCoreApplication::processEvents();
    }
    /// Some data all over their table, `Writes` or more of them.
    QStringList some(const char* sql) const
    {
        QStringList texts;
        BareStatement statement(bare, sql);
        while (statement.step())
            texts << statement.text(0).toString();
        if (texts.size() <= Writes)
            throw std::runtime_error("there are too few data");
        return texts;
    }
    /// Both sides must have written the same.
    void compare(benchmark::State& state)
    {
        for (const auto& table : {session().RsMain, session().RsRefDoc, session().RsRefFile, session().RsLink,
                                  session().RsCategory}) {
            const QString name = table->table().name;
            BareStatement rows(bare, qPrintable(u"SELECT CAST(count(*) AS TEXT) FROM "_s + name));
            if (!rows.step() || rows.text(0) != QString::number(table->recordCount()))
                state.SkipWithError(qPrintable(u"the sides have different rows in "_s + name));
        }
    }

    QuietProgram program;
    BareDatabase bare;
};

/// Deletes the same data on both sides, chosen in the list of all data after a click on the name.
class Deleting : public Writing
{
public:
    static constexpr int Selected = 10'000;

    explicit Deleting(int times)
    {
        Q_EMIT program.list().horizontalHeader()->sectionClicked(0);
        const ReportModel& rows = program.list().rows();
        for (int row = 0; row < times * Selected; ++row)
            m_identifiers << rows.text(FirstRow + row, IdentifierColumn).toString();
        run(bare, "CREATE TEMP TABLE doomed (Object_ID TEXT PRIMARY KEY) WITHOUT ROWID");
    }

    void select()
    {
        ReportList& list = program.list();
        const QItemSelection chosen(list.model()->index(FirstRow, 0),
                                    list.model()->index(FirstRow + Selected - 1, 0));
        list.selectionModel()->select(chosen,
                                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        QCoreApplication::processEvents();
        program.dialogs().announceBox(u"選択された複数のデータを削除しますか。"_s);
    }
    void deleteSelected()
    {
        program.mainWindow().mnuDataDelete_Click();
        QCoreApplication::processEvents();
    }
    void selectBare()
    {
        run(bare, "DELETE FROM doomed");
        run(bare, "BEGIN");
        BareStatement insertion(bare, "INSERT INTO doomed VALUES (?1)");
        for (int i = 0; i < Selected; ++i)
            write(insertion, {m_identifiers[m_next++]});
        run(bare, "COMMIT");
    }
    void deleteBare() const
    {
        for (const char* sql :
             {"BEGIN IMMEDIATE", "DELETE FROM Main WHERE Object_ID IN doomed",
              "DELETE FROM RefDoc WHERE Object_ID IN doomed", "DELETE FROM RefFile WHERE Object_ID IN doomed",
              "DELETE FROM Link WHERE Object_ID IN doomed OR Link_Object_ID IN doomed",
              "DELETE FROM Category WHERE Object_ID IN doomed", "COMMIT"})
            run(bare, sql);
    }

private:
    static constexpr int FirstRow = 20'000;

    QStringList m_identifiers; // in the order of the list
    qsizetype m_next = 0;
};

void deleting(benchmark::State& state)
{
    Deleting sides(static_cast<int>(state.max_iterations) + 1);
    measure(state,
            {"Deleting 10,000 selected items with their links and memberships",
             "one transaction with a DELETE for each table", 3},
            {.prepare = [&] { sides.select(); },
             .operation = [&] { sides.deleteSelected(); },
             .prepareFloor = [&] { sides.selectBare(); },
             .floor = [&] { sides.deleteBare(); }});
    sides.compare(state);
}
BENCHMARK(deleting)->UseManualTime()->Iterations(5);

void registering(benchmark::State& state)
{
    Writing sides;
    BareStatement insertion(sides.bare,
                            "INSERT INTO Main (Name, Object_ID, Explanation) VALUES (?1, ?2, ?3)");
    const QString shown = sides.some("SELECT Object_ID FROM Main LIMIT 100").front();
    int next = 0;
    measure(state, {"Registering an item", "its INSERT", 1.5},
            {.prepare =
                 [&] {
                     sides.program.closeOtherWindows();
                     CreateRegisterForm(sides.session(), u"M"_s);
                     sides.newestWindow().setFieldText(0, Name);
                     sides.newestWindow().setFieldText(2, Definition);
                     QCoreApplication::processEvents();
                     sides.program.dialogs().announceBox(u"本データを登録しました。"_s);
                 },
             .operation = [&] { sides.choose(u"mnuDataEntry"_s); },
             .prepareFloor =
                 [&] {
                     sides.rest(shown);
                     ++next;
                 },
             .floor =
                 [&] {
                     write(insertion, {Name, u"M-260115-%1"_s.arg(next, 3, 10, QChar(u'0')), Definition});
                 }});
    sides.compare(state);
}
BENCHMARK(registering)->UseManualTime()->Iterations(Writes);

void updating(benchmark::State& state)
{
    Writing sides;
    // With the categories that an update looks at, too.
    const QStringList filed = sides.some("SELECT DISTINCT c.Object_ID FROM Category c JOIN Main m "
                                         "ON m.Object_ID = c.Object_ID WHERE m.rowid % 211 = 0");
    BareStatement change(sides.bare, "UPDATE Main SET Name = ?1, Explanation = ?3 WHERE Object_ID = ?2");
    qsizetype next = 0;
    qsizetype nextOfFloor = 0;
    measure(state, {"Updating an item", "its UPDATE", 1.5},
            {.prepare =
                 [&] {
                     sides.program.closeOtherWindows();
                     ShowData(sides.session(), filed[next++]);
                     sides.newestWindow().setFieldText(0, Name);
                     sides.newestWindow().setFieldText(2, Definition);
                     QCoreApplication::processEvents();
                     sides.program.dialogs().announceBox(u"本データを更新しました。"_s);
                 },
             .operation = [&] { sides.choose(u"mnuDataUpdate"_s); },
             .prepareFloor = [&] { sides.rest(filed.back()); },
             .floor =
                 [&] {
                     write(change, {Name, filed[nextOfFloor++], Definition});
                 }});
    sides.compare(state);
}
BENCHMARK(updating)->UseManualTime()->Iterations(Writes);

void linking(benchmark::State& state)
{
    Writing sides;
    const QStringList data = sides.some("SELECT Object_ID FROM Main WHERE rowid % 251 = 0");
    BareStatement insertion(sides.bare, "INSERT INTO Link (Link_Object_ID, Object_ID) VALUES (?1, ?2)");
    qsizetype next = 0;
    qsizetype nextOfFloor = 0;
    measure(state, {"Linking two items", "the INSERT of the link", 1.5},
            {.prepare =
                 [&] {
                     ++next;
                     sides.program.dialogs().announceBox(
                         u"<"_s + GetDataName(sides.session(), data[next - 1]) + u"> と<"_s +
                         GetDataName(sides.session(), data[data.size() - next]) + u"> をリンクしますか。"_s);
                 },
             .operation =
                 [&] {
                     if (!LinkData(sides.session(), data[next - 1], data[data.size() - next], 1))
                         throw std::runtime_error("the items were not linked");
                 },
             .prepareFloor = [&] { ++nextOfFloor; },
             .floor =
                 [&] {
                     write(insertion, {data[nextOfFloor - 1], data[data.size() - nextOfFloor]});
                 }});
    sides.compare(state);
}
BENCHMARK(linking)->UseManualTime()->Iterations(Writes);

void classifying(benchmark::State& state)
{
    Writing sides;
    const QStringList data = sides.some("SELECT Object_ID FROM Main WHERE rowid % 31 = 0 EXCEPT "
                                        "SELECT Object_ID FROM Category");
    // One with categories above it, in which the item must not stay.
    const QString category =
        sides.some("SELECT Category_ID FROM Category_ID ORDER BY length(Category_ID) DESC")[0];
    BareStatement insertion(sides.bare, "INSERT INTO Category (Category_ID, Object_ID) VALUES (?1, ?2)");
    qsizetype next = 0;
    qsizetype nextOfFloor = 0;
    measure(state, {"Filing an item in a category", "the INSERT of the membership", 1.5},
            {.prepare = {},
             .operation = [&] { ClassifyCategory(sides.session(), category, data[next++]); },
             .prepareFloor = {},
             .floor =
                 [&] {
                     write(insertion, {category, data[nextOfFloor++]});
                 }});
    sides.compare(state);
}
BENCHMARK(classifying)->UseManualTime()->Iterations(Writes);

} // namespace

} // namespace quillon::bench
