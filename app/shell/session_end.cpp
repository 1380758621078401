#include "app/shell/session_end.h"

#include "app/base/ports/windows.h"

#include <QEvent>
#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace quillon
{

SessionEnd::SessionEnd(const Windows& windows, std::function<void()> end, Refuse refuse)
    : m_windows(windows), m_end(std::move(end)), m_refuse(std::move(refuse))
{
    // Else the toolkit tells the application to quit as soon as some helper of its own, such as a job of the desktop's
    // file dialog, is done.
    QCoreApplication::setQuitLockEnabled(false);
    // Directly: the answer is read when the signal has been emitted.
    connect(
        qGuiApp, &QGuiApplication::commitDataRequest, this,
        [this](QSessionManager& manager) {
            if (!mayCome())
                m_refuse(manager);
        },
        Qt::DirectConnection);
    qGuiApp->installEventFilter(this);
}

bool SessionEnd::mayCome() const
{
    const auto loaded = m_windows.loaded();
    return std::none_of(loaded.begin(), loaded.end(),
                        [](const LoadedWindow* window) { return window->holdsUnsavedInput(); });
}

bool SessionEnd::eventFilter(QObject* receiver, QEvent* event)
{
    if (receiver != qGuiApp || event->type() != QEvent::Quit)
        return QObject::eventFilter(receiver, event);
    // Before the toolkit closes the windows, which would ask.
    m_end();
    event->accept();
    return true;
}

} // namespace quillon
