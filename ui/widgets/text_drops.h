#pragma once

#include <QDropEvent>
#include <QMimeData>
#include <QObject>
#include <QString>

#include <utility>

namespace quillon
{

/// Takes what is dragged over a control when it carries text, always as a copy. False for all else, which is left to
/// whoever wants it; so are files, whose names come as a text, too.
inline bool takesText(QDropEvent& event)
{
    if (!event.mimeData()->hasText() || event.mimeData()->hasUrls()) {
        event.ignore();
        return false;
    }
    event.setDropAction(Qt::CopyAction);
    event.accept();
    return true;
}

/// Calls `received` with a text that `receiver` has taken, once the drag has ended: what follows may ask a question, and
/// until then the other program waits as well.
template <class Received> void afterDrop(QObject& receiver, const QDropEvent& event, Received&& received)
{
    QMetaObject::invokeMethod(
        &receiver,
        [received = std::forward<Received>(received), text = event.mimeData()->text()] { received(text); },
        Qt::QueuedConnection);
}

} // namespace quillon
