#pragma once

#include "app/base/ports/link_list_window.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/pressed_keys.h"

class QLabel;

namespace quillon
{

class ReportList;

/// The window that lists every link with both its ends.
class frmLinkList : public FormWindow, public LinkListWindow
{
    Q_OBJECT

public:
    frmLinkList(Session& session, WindowRegistry& registry);

    void reset() override;
    std::unique_ptr<LinkRowFill> fillRows() override;
    void setCount(const QString& text) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildMenus();
    void arrange();
    void mnuLinkShow_Click();
    void mnuLinkDelete_Click();
    void cmdLinkDelete_Click();
    void mnuLinkClose_Click();
    QString cell(int row, int column) const;

    ReportList* lsvLink = nullptr;
    QLabel* lblCount = nullptr;
    PressedKeys m_pressedKeys;
};

} // namespace quillon
