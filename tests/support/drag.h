#pragma once

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

namespace quillon::testing
{

/// Something that is dragged over a control or a window, with the events that the window system sends.
class Drag
{
public:
    /// `over`: the viewport of a view or the handle of a window; places are in its coordinates.
    explicit Drag(QObject& over) : m_over(over) {}
    Drag(QObject& over, const QString& text) : m_over(over) { m_data.setText(text); }

    QMimeData& data() { return m_data; }

    /// Enters there, as from outside, and moves; false when that is not taken.
    bool moveTo(const QPoint& place)
    {
        QDragEnterEvent entering(place, Actions, &m_data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_over, &entering);
        QDragMoveEvent moving(place, Actions, &m_data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_over, &moving);
        return entering.isAccepted() && moving.isAccepted();
    }
    /// Lets it go; false when it is not taken as a copy.
    bool dropAt(const QPoint& place)
    {
        QDropEvent dropping(place, Actions, &m_data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_over, &dropping);
        return dropping.isAccepted() && dropping.dropAction() == Qt::CopyAction;
    }
    void leave()
    {
        QDragLeaveEvent leaving;
        QCoreApplication::sendEvent(&m_over, &leaving);
    }

private:
    static constexpr Qt::DropActions Actions = Qt::CopyAction | Qt::MoveAction;

    QObject& m_over;
    QMimeData m_data;
};

/// Drops text on a control; false when it does not take it. What comes of it has happened when this returns.
inline bool drop(QWidget& control, const QString& text)
{
    Drag drag(control, text);
    const QPoint place = control.rect().center();
    if (!drag.moveTo(place))
        return false;
    const bool taken = drag.dropAt(place);
    QCoreApplication::processEvents();
    return taken;
}

} // namespace quillon::testing
