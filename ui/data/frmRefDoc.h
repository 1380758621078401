#pragma once

#include "ui/data/data_form.h"

namespace quillon
{

/// The window of one reference document: its name, its long text, its links and categories.
class frmRefDoc : public DataForm
{
    Q_OBJECT

public:
    frmRefDoc(Session& session, WindowRegistry& registry);

    void setMode(FormMode mode) override;

protected:
    bool warnsOnKey(const QKeyEvent& event) const override;
    bool RegisterData() override;

private:
    void buildMenus();
    void buildSizeButtons();
    /// Replaces the content by the text of a file that the user chooses.
    void mnuDataLoadText_Click();
    /// Sets the size of the content's font, in points.
    void cmdSize_Click(int points);

    QString m_chosenPath; // what the file dialog chose last
};

} // namespace quillon
