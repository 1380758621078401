#pragma once

#include "ui/widgets/form_window.h"

class QCheckBox;
class QKeyEvent;
class QLineEdit;

namespace quillon
{

struct DataKind;

/// The window that looks for a text in names and explanations and hands what it finds to the data selection window.
class frmFind : public FormWindow
{
    Q_OBJECT

public:
    frmFind(Session& session, WindowRegistry& registry);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Enter searches and Esc closes, whichever control has the focus.
    void keyPressEvent(QKeyEvent* event) override;

private:
    void arrange();
    void cmdFind_Click();
    /// True when the key is not the text box's own.
    bool txtFind_KeyPress(const QKeyEvent& key);
    void listMatches(const DataKind& kind, const QString& criteria, const QString& searched);

    QLineEdit* txtFind = nullptr;
    QCheckBox* chkMain = nullptr;
    QCheckBox* chkRefDoc = nullptr;
    QCheckBox* chkRefFile = nullptr;
};

} // namespace quillon
