#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/heap.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "store/session.h"
#include "ui/main/data_list.h"
#include "ui/main/fill_progress.h"
#include "ui/widgets/report_list.h"

#include <QProgressBar>

#include <array>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

constexpr std::array AllData = {"SELECT Name, Object_ID FROM Main", "SELECT Name, Object_ID FROM RefDoc",
                                "SELECT Name, Object_ID FROM RefFile"};

void readAllData(const QString& path)
{
    const BareDatabase database(path);
    for (const char* sql : AllData) {
        BareStatement statement(database, sql);
        readAll(statement, 2);
    }
}

void openAndList(benchmark::State& state, const RowText& text, Corpus corpus)
{
    const QString path = corpusPath(corpus);
    std::unique_ptr<QuietProgram> program;
    measure(state, text,
            {.prepare =
                 [&] {
                     program.reset();
                     program = std::make_unique<QuietProgram>();
                 },
             .operation = [&] { program->open(path); },
             .prepareFloor = [&] { program.reset(); },
             .floor = [&] { readAllData(path); }});
}

void open125000(benchmark::State& state)
{
    openAndList(state,
                {"Opening a file and listing 125,000 items, until painted",
                 "SELECT of the same columns and reading the texts", 1.2},
                Corpus::Default);
}
BENCHMARK(open125000)->UseManualTime()->Iterations(15);

void open1000000(benchmark::State& state)
{
    openAndList(state,
                {"Opening a file and listing 1,000,000 items, until painted",
                 "SELECT of the same columns and reading the texts", 1.2},
                Corpus::Million);
}
BENCHMARK(open1000000)->UseManualTime()->Iterations(7);

void startAndOpen125000(benchmark::State& state)
{
    const QString path = corpusPath(Corpus::Default);
    std::unique_ptr<QuietProgram> program;
    measure(state, {"The same with the main window made and shown first", "the same SELECT"},
            {.prepare = [&] { program.reset(); },
             .operation =
                 [&] {
                     program = std::make_unique<QuietProgram>();
                     program->open(path);
                 },
             .prepareFloor = [&] { program.reset(); },
             .floor = [&] { readAllData(path); }});
}
BENCHMARK(startAndOpen125000)->UseManualTime()->Iterations(9);

/// A list of a million rows as the program fills it, without a view.
class MillionRows
{
public:
    MillionRows()
        : m_rows({{u"名称"_s, ReportModel::Storage::Text},
                  {u"種別"_s, ReportModel::Storage::Dictionary},
                  {u"ＩＤ"_s, ReportModel::Storage::Text},
                  {u"下位分類"_s, ReportModel::Storage::Dictionary}})
    {
        m_program.open(corpusPath(Corpus::Million));
        fill(); // once for what stays allocated besides the rows
        m_rows.clear();
        const double before = heapInUse();
        fill();
        heapBytes = heapInUse() - before;
        for (int row = 0; row < m_rows.rowCount(); ++row) {
            for (int column = 0; column < m_rows.columnCount(); ++column)
                textBytes += static_cast<double>(m_rows.text(row, column).size()) * sizeof(char16_t);
        }
        heldBytes = static_cast<double>(m_rows.bytesHeld());
    }

    double heapBytes = 0;
    double heldBytes = 0;
    double textBytes = 0;

private:
    void fill()
    {
        QProgressBar bar;
        FillProgress progress(bar, m_program.session().clock);
        DataListFiller filler(m_program.session(), m_rows, progress);
        filler.CreateDataListMain(m_program.session().RsMain, false, {});
        filler.CreateDataListMain(m_program.session().RsRefDoc, true, {});
        filler.CreateDataListMain(m_program.session().RsRefFile, true, {});
    }

    QuietProgram m_program;
    ReportModel m_rows;
};

void listMemory(benchmark::State& state)
{
    const MillionRows rows;
    reportBytes(
        state, {"Memory of a list of 1,000,000 rows, as it counts itself", "the texts shown, in UTF-16", 1.5},
        rows.heldBytes, rows.textBytes);
}
BENCHMARK(listMemory)->UseManualTime()->Iterations(1);

void listHeap(benchmark::State& state)
{
    const MillionRows rows;
    reportBytes(state, {"The same, as the heap counts it", "the same texts", 1.5}, rows.heapBytes,
                rows.textBytes);
}
BENCHMARK(listHeap)->UseManualTime()->Iterations(1);

} // namespace

} // namespace quillon::bench
