#pragma once

#include "ui/widgets/form_window.h"

class QLabel;

namespace quillon
{

/// How many data of each kind the open database holds, and their total, counted once when the window is loaded.
class frmEntryInfo : public FormWindow
{
    Q_OBJECT

public:
    frmEntryInfo(Session& session, WindowRegistry& registry);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Form_Load();
    void arrange();

    QLabel* lblMainCount = nullptr;
    QLabel* lblRefDocCount = nullptr;
    QLabel* lblRefFileCount = nullptr;
    QLabel* lblAllCount = nullptr;
};

} // namespace quillon
