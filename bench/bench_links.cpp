#include "app/base/ports/link_list_window.h"
#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/paint_watch.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/report_list.h"

#include <QCoreApplication>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

/// Chooses the entry of the Info menu, up to the painted list of links.
void listLinks(QuietProgram& program, qint64 links)
{
    program.mainWindow().mnuInfoLink_Click();
    auto& window = dynamic_cast<FormWindow&>(program.session().windows.linkList());
    const auto& list = *window.findChild<ReportList*>(u"lsvLink"_s);
    const PaintWatch watch(*list.viewport());
    QCoreApplication::processEvents();
    if (!watch.painted() || list.rows().rowCount() != links)
        throw std::runtime_error("the links were not painted");
}

void linkList(benchmark::State& state)
{
    QuietProgram program;
    program.open(corpusPath(Corpus::Default));
    const BareDatabase database(corpusPath(Corpus::Default));
    BareStatement links(database, "SELECT Link_Object_ID, Object_ID FROM Link");
    BareStatement names(database,
                        "SELECT Name, Object_ID FROM Main UNION ALL SELECT Name, Object_ID FROM RefDoc "
                        "UNION ALL SELECT Name, Object_ID FROM RefFile");
    const int count = readAll(links, 2);
    measure(state,
            {"Listing 150,000 links with both names, until painted",
             "SELECT of the links and of all names, and reading the texts", 2},
            {.prepare = [&] { program.closeOtherWindows(); },
             .operation = [&] { listLinks(program, count); },
             .prepareFloor = {},
             .floor =
                 [&] {
                     readAll(links, 2);
                     readAll(names, 2);
                 }});
}
BENCHMARK(linkList)->UseManualTime()->Iterations(31);

} // namespace

} // namespace quillon::bench
