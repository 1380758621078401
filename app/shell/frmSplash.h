#pragma once

#include "ui/widgets/form_window.h"

class QFrame;
class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

namespace quillon
{

/// The splash window of start-up, which is also the system information. It is loaded in neither use: choose one by
/// `startTiming` or `showInformation` before showing it.
class frmSplash : public FormWindow
{
    Q_OBJECT

public:
    frmSplash(Session& session, WindowRegistry& registry);

    /// The use at start-up: a bare window with a progress bar that unloads itself after some three seconds and cannot
    /// be closed before.
    void startTiming();
    /// The use as system information: a framed window that stays until it is closed.
    void showInformation();

public Q_SLOTS:
    void tmrSwitch_Timer();
    void cmdClose_Click();

protected:
    bool queryUnload() override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void Form_Load();
    void setUp();

    QFrame* Frame1 = nullptr;
    QLabel* lblProductName = nullptr;
    QLabel* lblPlatform = nullptr;
    QLabel* lblCompanyProduct = nullptr;
    QLabel* lblVersion = nullptr;
    QProgressBar* pgbSplash = nullptr;
    QPushButton* cmdClose = nullptr;
    QTimer* tmrSwitch = nullptr;
    qint16 SplashTicks = 0;
};

} // namespace quillon
