#include "ui/widgets/cancellable_work.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace quillon
{

namespace
{

/// The work in which the person's events arrive at present; null for none.
QPointer<const CancellableWork>& workThatLetsEventsArrive()
{
    static QPointer<const CancellableWork> work;
    return work;
}

} // namespace

CancellableWork::CancellableWork(QWidget& window, QWidget& cancelButton)
    : m_window(&window), m_cancelButton(&cancelButton)
{
}

bool CancellableWork::keepsFromActing(const QWidget& control)
{
    const QPointer<const CancellableWork>& work = workThatLetsEventsArrive();
    return !work.isNull() && &control != work->m_cancelButton;
}

bool CancellableWork::goesOn()
{
    if (m_cancelled)
        return false;
    // Only meanwhile, so that a box of the work can be answered. The filter that came last is asked first.
    workThatLetsEventsArrive() = this;
    QCoreApplication::instance()->installEventFilter(this);
    QCoreApplication::processEvents();
    QCoreApplication::instance()->removeEventFilter(this);
    workThatLetsEventsArrive() = nullptr;
    return !m_cancelled;
}

bool CancellableWork::eventFilter(QObject* receiver, QEvent* event)
{
    if (!receiver->isWidgetType())
        return false;
    const bool inWindow = static_cast<QWidget*>(receiver)->window() == m_window;
    switch (event->type()) {
    case QEvent::KeyPress: {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (inWindow && key.key() == Qt::Key_Escape && !key.isAutoRepeat()) {
            cancel();
            return true;
        }
        return receiver != m_cancelButton;
    }
    case QEvent::Close:
        if (inWindow)
            cancel();
        event->ignore();
        return true;
    case QEvent::ShortcutOverride:
        event->ignore();
        return true;
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        return receiver != m_cancelButton;
    default:
        return false;
    }
}

} // namespace quillon
