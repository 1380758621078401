#pragma once

#include "app/base/ports/data_selection.h"
#include "ui/widgets/form_window.h"

namespace quillon
{

class ReportList;
class StatusPanels;

/// The window that lists data and lets the person act on one of them: show it, delete it, or, while a link is pending,
/// link it to the pending source.
class frmDataSelect : public FormWindow, public DataSelection
{
    Q_OBJECT

public:
    frmDataSelect(Session& session, WindowRegistry& registry);

    void clearRows() override;
    std::unique_ptr<DataRowFill> fillRows(const QString& searched) override;
    QString caption() const override { return windowTitle(); }
    void setCaption(const QString& caption) override { setWindowTitle(caption); }
    void setStatus(int panel, const QString& text) override;

private:
    void buildMenus();
    void arrange();
    void connectList();
    /// The selected row; -1, after telling the person so, when none is selected.
    int rowToActOn();
    void cmdOK_Click();
    /// Links a datum with the one for which the choice goes on. True when it was linked. Error 3021 when that one is gone.
    bool linkTo(const QString& identifier);
    /// Shows a datum, and in its window where the text stands that it was found by.
    void showFound(const QString& identifier, const QString& searched);
    void mnuDelete_Click();
    void cmdCancel_Click();
    void lsvData_KeyUp(int key);

    ReportList* lsvData = nullptr;
    StatusPanels* sbStatus = nullptr;
};

} // namespace quillon
