#pragma once

#include "ui/data/data_form.h"

namespace quillon
{

/// The window of one definition: its name, its text, its links and categories, in registration or display mode.
class frmMainData : public DataForm
{
    Q_OBJECT

public:
    frmMainData(Session& session, WindowRegistry& registry);

    void setMode(FormMode mode) override;

protected:
    bool warnsOnKey(const QKeyEvent& event) const override;
    bool RegisterData() override;

private:
    void mnuDataNoDef_Click();
    void buildMenus();
};

} // namespace quillon
