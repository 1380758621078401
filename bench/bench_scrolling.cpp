#include "bench/corpora.h"
#include "bench/corpus/random.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "ui/widgets/report_list.h"

#include <QAbstractTableModel>
#include <QCoreApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableView>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

/// As many rows as asked for, and nothing in them.
class EmptyRows : public QAbstractTableModel
{
public:
    EmptyRows(int rows, int columns) : m_rows(rows), m_columns(columns) {}
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : m_rows; }
    int columnCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : m_columns;
    }
    QVariant data(const QModelIndex&, int) const override { return {}; }

private:
    int m_rows;
    int m_columns;
};

/// Makes a plain table look and behave like a list of the program.
void makeAlike(QTableView& table, const ReportList& list)
{
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setSelectionMode(QAbstractItemView::ExtendedSelection);
    table.setShowGrid(false);
    table.setWordWrap(false);
    table.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table.verticalHeader()->hide();
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.verticalHeader()->setMinimumSectionSize(1);
    table.verticalHeader()->setDefaultSectionSize(list.verticalHeader()->defaultSectionSize());
    for (int column = 0; column < list.model()->columnCount(); ++column)
        table.setColumnWidth(column, list.columnWidth(column));
}

/// Goes through the rows as a person does: pages, jumps, single steps, selected runs of rows; each step is painted.
void scrollAndSelect(QTableView& view)
{
    corpus::Random random(1, 1);
    const QAbstractItemModel& rows = *view.model();
    QItemSelectionModel& selection = *view.selectionModel();
    constexpr int Rounds = 40;
    for (int round = 0; round < Rounds; ++round) {
        const int row = random.between(0, rows.rowCount() - 200);
        view.verticalScrollBar()->setValue(row);
        view.viewport()->repaint();
        for (int page = 0; page < 3; ++page) {
            view.verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepAdd);
            view.viewport()->repaint();
        }
        constexpr auto Rows = QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
        for (int step = 0; step < 3; ++step) {
            selection.setCurrentIndex(rows.index(row + step, 0), Rows);
            view.viewport()->repaint();
        }
        selection.select(QItemSelection(rows.index(row, 0), rows.index(row + 100, rows.columnCount() - 1)),
                         Rows);
        view.viewport()->repaint();
    }
    view.selectAll();
    view.viewport()->repaint();
    selection.clear();
    view.viewport()->repaint();
}

void scrolling(benchmark::State& state)
{
    QuietProgram program;
    program.open(corpusPath(Corpus::Million));
    ReportList& list = program.list();
    EmptyRows rows(list.rows().rowCount(), list.rows().columnCount());
    QTableView table;
    table.setModel(&rows);
    makeAlike(table, list);
    table.resize(list.size());
    table.show();
    QCoreApplication::processEvents();
    measure(state, {"Scrolling and selecting in 1,000,000 rows", "the same in as many empty rows", 2},
            {.prepare = {},
             .operation = [&] { scrollAndSelect(list); },
             .prepareFloor = {},
             .floor = [&] { scrollAndSelect(table); }});
}
BENCHMARK(scrolling)->UseManualTime()->Iterations(11);

} // namespace

} // namespace quillon::bench
