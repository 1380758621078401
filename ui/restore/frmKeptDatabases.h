#pragma once

#include "ui/widgets/form_window.h"

namespace quillon
{

class ReportList;

/// The window in which a person chooses the database to take something back from: one for which something is kept, or a
/// file.
class frmKeptDatabases : public FormWindow
{
    Q_OBJECT

public:
    frmKeptDatabases(Session& session, WindowRegistry& registry);

Q_SIGNALS:
    /// The window has closed with this answer.
    void chosen(const QString& path);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void arrange();
    void fill();
    void cmdOK_Click();
    void cmdFile_Click();
    void cmdCancel_Click();
    void answer(const QString& path);

    ReportList* lsvDatabase = nullptr;
    QPushButton* cmdOK = nullptr;
};

} // namespace quillon
