#include "ui/widgets/form_window.h"

#include "store/session.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/window_registry.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QWindow>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

FormWindow::FormWindow(Session& session, WindowRegistry& registry, const QString& windowName)
    : m_session(session), m_registry(registry)
{
    setObjectName(windowName);
    m_registry.add(this);
}

FormWindow::~FormWindow()
{
    m_registry.remove(this);
}

bool FormWindow::unload()
{
    return tryUnload();
}

bool FormWindow::tryUnload()
{
    if (m_unloaded)
        return true;
    // The close box pressed again while the question is still on the screen must not ask a second time.
    if (m_asking)
        return false;
    const QPointer<FormWindow> guard(this);
    bool mayClose = false;
    m_asking = true;
    handleEvent(m_session.reporting, u"Form_Unload"_s, [&] { mayClose = queryUnload(); });
    if (!guard)
        return true;
    m_asking = false;
    if (!mayClose)
        return false;
    m_unloaded = true;
    hide();
    m_registry.remove(this);
    deleteLater();
    Q_EMIT unloaded();
    return true;
}

void FormWindow::closeEvent(QCloseEvent* event)
{
    event->setAccepted(tryUnload());
}

void FormWindow::bringToFront()
{
    if (isMinimized())
        setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void FormWindow::showModeless()
{
    if (!isVisible())
        setWindowModality(Qt::NonModal);
    bringToFront();
}

void FormWindow::showModal()
{
    if (m_unloaded)
        return;
    // Modality takes effect only when a window appears.
    if (isVisible() && windowModality() != Qt::ApplicationModal)
        hide();
    const QPointer<QWidget> before = QApplication::activeWindow();
    setWindowModality(Qt::ApplicationModal);
    if (before && before != this && before->windowHandle() != nullptr) {
        winId(); // makes the native window, so that the window manager keeps it above the one that waits for it
        windowHandle()->setTransientParent(before->windowHandle());
    }
    QEventLoop loop;
    connect(this, &FormWindow::unloaded, &loop, &QEventLoop::quit);
    connect(this, &QObject::destroyed, &loop, &QEventLoop::quit);
    bringToFront();
    loop.exec();
    if (before && before->isVisible())
        before->activateWindow();
}

QAction* FormWindow::addEntry(QMenu* menu, const QString& name, const QString& caption)
{
    auto* entry = new QAction(caption, menu);
    entry->setObjectName(name);
    // Some desktops move entries to other menus by what their caption looks like.
    entry->setMenuRole(QAction::NoRole);
    menu->addAction(entry);
    return entry;
}

QMenu* FormWindow::addMenu(const QString& name, const QString& caption)
{
    // Always inside the window, also on desktops with one menu bar for all.
    menuBar()->setNativeMenuBar(false);
    QMenu* menu = menuBar()->addMenu(caption);
    menu->setObjectName(name);
    menu->menuAction()->setObjectName(name);
    return menu;
}

QMenu* FormWindow::addSubmenu(QMenu* menu, const QString& name, const QString& caption)
{
    QMenu* submenu = menu->addMenu(caption);
    submenu->setObjectName(name);
    submenu->menuAction()->setObjectName(name);
    return submenu;
}

QAction* FormWindow::addLine(QMenu* menu, const QString& name)
{
    QAction* line = menu->addSeparator();
    line->setObjectName(name);
    return line;
}

} // namespace quillon
