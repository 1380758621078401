#include "ui/widgets/form_window.h"

#include "app/base/twips.h"
#include "store/session.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/focus_ring.h"
#include "ui/widgets/may_act.h"
#include "ui/widgets/menu_bar.h"
#include "ui/widgets/persons_input.h"
#include "ui/widgets/read_only_text.h"
#include "ui/widgets/screen_room.h"
#include "ui/widgets/scrolled_area.h"
#include "ui/widgets/title_width.h"
#include "ui/widgets/window_contents.h"
#include "ui/widgets/window_registry.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLayout>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QWindow>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// A command acts on what the person believes to have typed, and not where the person could not act.
std::function<void()> afterConfirming(const QWidget& control, const std::function<void()>& command)
{
    return [&control, command] {
        if (!mayActOn(control))
            return;
        PersonsInput::ofApplication().composition().confirm();
        command();
    };
}

} // namespace

FormWindow::FormWindow(Session& session, WindowRegistry& registry, const QString& windowName)
    : m_session(session), m_registry(registry)
{
    setObjectName(windowName);
    m_registry.add(this);
    PersonsInput::ofApplication(); // from the first window on
    FocusRing::followFocus();
    keepReadOnlyFieldsFromOutside();
}

FormWindow::~FormWindow()
{
    m_registry.remove(this);
}

bool FormWindow::unload()
{
    return tryUnload();
}

bool FormWindow::mayUnload()
{
    if (m_unloaded)
        return true;
    // The close box pressed again while the question is still on the screen must not ask a second time.
    if (m_asking)
        return false;
    const QPointer<FormWindow> guard(this);
    PersonsInput::ofApplication().composition().confirm();
    m_asking = true;
    const PersonsInput::Claim claim(*this); // it may be closed from another window
    const auto end = qScopeGuard([&] {
        if (guard)
            m_asking = false;
    });
    return queryUnload() || guard.isNull(); // a failure goes to whoever wanted the window closed
}

bool FormWindow::tryUnload()
{
    const QPointer<FormWindow> guard(this);
    if (!mayUnload())
        return false;
    if (guard)
        unloadAnswered();
    return true;
}

void FormWindow::unloadAnswered()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    hide();
    m_registry.remove(this);
    deleteLater();
    Q_EMIT unloaded();
}

void FormWindow::keepAtLeast(double width, double height)
{
    m_leastFrame = {width, height};
    enforceLeastSize();
}

void FormWindow::setContents(QWidget* body, QLayout* bottom)
{
    if (bottom == nullptr)
        setCentralWidget(new ScrolledArea(body, ScrolledArea::Least::Content, this));
    else
        setCentralWidget(new WindowContents(body, bottom, this));
}

QSize FormWindow::roomOnScreen() const
{
    const QSize frame = frameSize() - size();
    const bool isKnown = !frame.isNull() || windowFlags().testFlag(Qt::FramelessWindowHint);
    return isKnown ? screen()->availableSize() - frame : roomInUsualFrame(*this);
}

void FormWindow::enforceLeastSize()
{
    // A window that has one size has settled it with its screen itself.
    if (isMinimized() || minimumSize() == maximumSize())
        return;
    QSize least(0, 0);
    if (!m_leastFrame.isEmpty())
        least = QSize(pixelsFromTwips(m_leastFrame.width()), pixelsFromTwips(m_leastFrame.height())) -
                (frameSize() - size());
    // A least size of its own keeps the window from asking its layout, which may need more with large fonts, and more
    // than the screen has.
    const QSize enforced = least.expandedTo(minimumSizeHint()).boundedTo(roomOnScreen());
    if (minimumSize() == enforced)
        return;
    const QSize before = size();
    setMinimumSize(enforced);
    if (size() != before)
        moveOntoScreen();
}

void FormWindow::fitScreen()
{
    if (isMinimized() || isMaximized() || isFullScreen() || minimumSize() == maximumSize())
        return;
    const QSize before = size();
    resize(size().boundedTo(roomOnScreen()));
    if (size() != before)
        moveOntoScreen();
}

void FormWindow::moveOntoScreen()
{
    // One that nobody has placed yet is placed by the window manager.
    if (!isVisible() && !testAttribute(Qt::WA_Moved))
        return;
    const QRect place = placeOnScreen(frameGeometry(), screen()->availableGeometry());
    if (place.topLeft() != frameGeometry().topLeft())
        move(place.topLeft());
}

void FormWindow::followScreen()
{
    if (m_followsScreen || windowHandle() == nullptr)
        return;
    m_followsScreen = true;
    const auto fit = [this] {
        enforceLeastSize();
        fitScreen();
    };
    const auto watch = [this, fit](const QScreen* watched) {
        disconnect(m_screenWatch);
        if (watched != nullptr)
            m_screenWatch = connect(watched, &QScreen::availableGeometryChanged, this, fit);
    };
    watch(screen());
    connect(windowHandle(), &QWindow::screenChanged, this, [watch, fit](const QScreen* other) {
        watch(other);
        fit();
    });
}

bool FormWindow::event(QEvent* event)
{
    // The thickness of the frame is known only after the window has been shown.
    const bool mayTell = event->type() == QEvent::Resize || event->type() == QEvent::Move ||
                         event->type() == QEvent::WindowActivate || event->type() == QEvent::Show ||
                         event->type() == QEvent::LayoutRequest;
    const bool handled = QMainWindow::event(event);
    if (mayTell) {
        enforceLeastSize();
        if (const QSize frame = frameSize() - size(); isVisible() && frame != m_fittedFrame) {
            m_fittedFrame = frame;
            fitScreen();
        }
    }
    return handled;
}

void FormWindow::keyPressEvent(QKeyEvent* event)
{
    auto* button = qobject_cast<QPushButton*>(focusWidget());
    if (button != nullptr && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        event->accept();
        if (!event->isAutoRepeat())
            button->click();
        return;
    }
    QMainWindow::keyPressEvent(event);
}

void FormWindow::closeEvent(QCloseEvent* event)
{
    bool closed = false;
    handleEvent(m_session.reporting, u"Form_Unload"_s, [&] { closed = tryUnload(); });
    event->setAccepted(closed);
}

void FormWindow::prepareToAppear()
{
    // What a control has shown, hidden or changed since it was laid out, it tells by events that are still to come.
    const auto controls = findChildren<QWidget*>();
    for (QWidget* control : controls)
        control->updateGeometry();
    const auto layouts = findChildren<QLayout*>();
    for (QLayout* stale : layouts)
        stale->invalidate();
    // A window whose size nobody has chosen would get it only in appearing.
    QSize wanted = testAttribute(Qt::WA_Resized) ? size() : sizeHint();
    if (m_opensOverMainWindow)
        wanted = wanted.expandedTo({widthForTitle(*this), 0});
    enforceLeastSize();
    if (minimumSize() != maximumSize())
        resize(wanted.boundedTo(roomOnScreen()));
    if (m_opensOverMainWindow)
        placeOverMainWindow();
}

void FormWindow::growWhereItScrolls()
{
    const QSize room = roomOnScreen();
    const auto areas = findChildren<ScrolledArea*>();
    // A bar, or a row of buttons that breaks, takes room that no hint tells before; and with the window the rest changes.
    for (int pass = 0; pass < 3; ++pass) {
        QSize lacking(0, 0);
        for (const ScrolledArea* area : areas) {
            if (area->isVisible())
                lacking = lacking.expandedTo(area->widget()->size() - area->viewport()->size());
        }
        const QSize grown = (size() + lacking).boundedTo(room.expandedTo(size()));
        if (grown == size())
            return;
        if (minimumSize() == maximumSize())
            setFixedSize(grown);
        else
            resize(grown);
    }
}

void FormWindow::placeOverMainWindow()
{
    const auto* mainWindow = dynamic_cast<const FormWindow*>(m_registry.mainWindow());
    if (mainWindow == nullptr || mainWindow == this || !mainWindow->isVisible())
        return;
    // The thickness of its own frame is not known yet; that of the main window is as good.
    const QSize frame = mainWindow->frameSize() - mainWindow->size();
    QRect place(QPoint(0, 0), size() + frame);
    place.moveCenter(mainWindow->frameGeometry().center());
    move(placeOnScreen(place, mainWindow->screen()->availableGeometry()).topLeft());
}

void FormWindow::bringToFront()
{
    const bool appears = !isVisible();
    if (appears)
        prepareToAppear();
    if (isMinimized())
        setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    if (appears && !isMaximized()) {
        growWhereItScrolls();
        moveOntoScreen();
    }
    followScreen();
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
    // Not the active window: between two windows of an action none is.
    QWidget* acting = PersonsInput::ofApplication().actingWindow();
    const QPointer<QWidget> before = acting != nullptr ? acting : QApplication::activeWindow();
    setWindowModality(Qt::ApplicationModal);
    if (before && before != this && before->windowHandle() != nullptr) {
        winId(); // makes the native window, so that the window manager keeps it above the one that waits for it
        windowHandle()->setTransientParent(before->windowHandle());
    }
    QEventLoop loop;
    connect(this, &FormWindow::unloaded, &loop, &QEventLoop::quit);
    connect(this, &QObject::destroyed, &loop, &QEventLoop::quit);
    {
        // What follows its end is done by the window before again, and asked there.
        const PersonsInput::Claim acts(*this);
        bringToFront();
        loop.exec();
    }
    if (before && before->isVisible())
        before->activateWindow();
}

QAction* FormWindow::addEntry(QMenu* menu, const QString& name, const QString& caption,
                              const Handler& handler)
{
    auto* entry = new QAction(caption, menu);
    entry->setObjectName(name);
    // Some desktops move entries to other menus by what their caption looks like.
    entry->setMenuRole(QAction::NoRole);
    menu->addAction(entry);
    m_actions.insert(name, entry);
    if (handler)
        connect(entry, &QAction::triggered, this,
                eventSlot(m_session.reporting, name + u"_Click"_s, afterConfirming(*this, handler)));
    return entry;
}

QPushButton* FormWindow::addButton(QWidget* parent, const QString& name, const QString& caption,
                                   const Handler& handler)
{
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this,
            eventSlot(m_session.reporting, name.section(u'(', 0, 0) + u"_Click"_s,
                      afterConfirming(*button, handler)));
    return button;
}

QMenu* FormWindow::addMenu(const QString& name, const QString& caption)
{
    if (m_actions.isEmpty()) {
        setMenuBar(new MenuBar(this));
        // Always inside the window, also on desktops with one menu bar for all.
        menuBar()->setNativeMenuBar(false);
    }
    QMenu* menu = menuBar()->addMenu(caption);
    menu->setObjectName(name);
    menu->menuAction()->setObjectName(name);
    m_actions.insert(name, menu->menuAction());
    return menu;
}

QMenu* FormWindow::addSubmenu(QMenu* menu, const QString& name, const QString& caption)
{
    QMenu* submenu = menu->addMenu(caption);
    submenu->setObjectName(name);
    submenu->menuAction()->setObjectName(name);
    m_actions.insert(name, submenu->menuAction());
    return submenu;
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): one of the functions that build a window's menus
QAction* FormWindow::addLine(QMenu* menu, const QString& name)
{
    QAction* line = menu->addSeparator();
    line->setObjectName(name);
    return line;
}

} // namespace quillon
