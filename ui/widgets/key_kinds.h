#pragma once

#include <QKeyEvent>
#include <QString>

namespace quillon
{

/// Whether a key press types a character.
inline bool typesText(const QKeyEvent& event)
{
    const QString text = event.text();
    return !text.isEmpty() && text.front().isPrint() &&
           !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
}

/// Whether a key press asks for the context menu, where the system does not know that itself.
inline bool asksForMenu(const QKeyEvent& event)
{
    return event.key() == Qt::Key_F10 && (event.modifiers() & ~Qt::KeypadModifier) == Qt::ShiftModifier;
}

/// Whether Shift is held without Ctrl and Alt; what else is held (a key of the number pad, for one) does not count.
inline bool isShiftAlone(Qt::KeyboardModifiers modifiers)
{
    return (modifiers & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier)) == Qt::ShiftModifier;
}

/// Whether a key such as Esc or Delete carries a control character as its text. An item view would search for it
/// and keep the key from its window.
inline bool typesControlCharacter(const QKeyEvent& event)
{
    const QString text = event.text();
    return !text.isEmpty() && !text.front().isPrint() &&
           !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) &&
           event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter;
}

} // namespace quillon
