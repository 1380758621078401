#pragma once

#include "app/base/ports/data_window.h"
#include "app/base/ports/main_window_port.h"
#include "ui/widgets/report_model.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <vector>

namespace quillon
{

class ReportList;
class StatusPanels;

/// Takes the rows out of the data list, and puts them back with what was selected and how far the list was scrolled.
class ShownList : public MainWindowPort::Shown
{
public:
    /// `listed`: the node whose data are listed; none while they are taken out.
    ShownList(ReportList& list, StatusPanels& status, CategoryRow& listed);
    ~ShownList() override;
    ShownList(const ShownList&) = delete;
    ShownList& operator=(const ShownList&) = delete;

    bool hasRows() const { return m_hasRows; }
    void showAgain() override;

private:
    QPointer<ReportList> m_list;
    QPointer<StatusPanels> m_status;
    CategoryRow& m_listed;
    CategoryRow m_keptListed;
    QString m_state;
    QString m_count;
    std::vector<int> m_selected;
    int m_current;
    int m_scrolled;
    int m_sortedBy; // -1: by none
    bool m_hasRows;
    std::unique_ptr<ReportModel::Rows> m_rows; // taken last
};

} // namespace quillon
