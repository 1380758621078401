#include "ui/main/shown_list.h"

#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QScrollBar>

#include <utility>

namespace quillon
{

ShownList::ShownList(ReportList& list, StatusPanels& status, CategoryRow& listed)
    : m_list(&list), m_status(&status), m_listed(listed), m_keptListed(std::exchange(listed, CategoryRow())),
      m_state(status.text(1)), m_count(status.text(2)), m_selected(list.selectedRows()),
      m_current(list.currentIndex().row()), m_scrolled(list.verticalScrollBar()->value()),
      m_sortedBy(list.horizontalHeader()->isSortIndicatorShown()
                     ? list.horizontalHeader()->sortIndicatorSection()
                     : -1),
      m_hasRows(list.rows().rowCount() > 0), m_rows(list.rows().take())
{
}

ShownList::~ShownList() = default;

void ShownList::showAgain()
{
    if (m_list.isNull() || m_status.isNull())
        return;
    m_list->rows().putBack(*m_rows);
    QItemSelection selection;
    const int lastColumn = m_list->rows().columnCount() - 1;
    for (std::size_t first = 0; first < m_selected.size();) {
        std::size_t end = first + 1;
        while (end < m_selected.size() && m_selected[end] == m_selected[end - 1] + 1)
            ++end;
        selection.select(m_list->rows().index(m_selected[first], 0),
                         m_list->rows().index(m_selected[end - 1], lastColumn));
        first = end;
    }
    m_list->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (m_current >= 0)
        m_list->selectionModel()->setCurrentIndex(m_list->rows().index(m_current, 0),
                                                  QItemSelectionModel::NoUpdate);
    if (m_sortedBy >= 0) {
        m_list->horizontalHeader()->setSortIndicator(m_sortedBy, Qt::AscendingOrder);
        m_list->horizontalHeader()->setSortIndicatorShown(true);
    }
    m_list->verticalScrollBar()->setValue(m_scrolled);
    m_listed = m_keptListed;
    m_status->setText(1, m_state);
    m_status->setText(2, m_count);
}

} // namespace quillon
