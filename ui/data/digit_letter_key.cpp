#include "ui/data/digit_letter_key.h"

#include <QGuiApplication>
#include <QKeyEvent>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

bool isWithin(quint32 code, quint32 first, quint32 last)
{
    return first <= code && code <= last;
}

/// The signs that Shift makes of the top row's digits on Japanese and English keyboards.
bool isSignOnDigit(int key)
{
    switch (key) {
    case Qt::Key_Exclam:
    case Qt::Key_QuoteDbl:
    case Qt::Key_NumberSign:
    case Qt::Key_Dollar:
    case Qt::Key_Percent:
    case Qt::Key_Ampersand:
    case Qt::Key_Apostrophe:
    case Qt::Key_ParenLeft:
    case Qt::Key_ParenRight:
    case Qt::Key_At:
    case Qt::Key_AsciiCircum:
    case Qt::Key_Asterisk:
        return true;
    default:
        return false;
    }
}

} // namespace

bool isDigitOrLetterKey(const QKeyEvent& event)
{
    if (event.nativeVirtualKey() != 0 && QGuiApplication::platformName() == "windows"_L1)
        return isWithin(event.nativeVirtualKey(), 48, 90);
    const int key = event.key();
    if (Qt::Key_A <= key && key <= Qt::Key_Z)
        return true;
    if (event.modifiers().testFlag(Qt::KeypadModifier))
        return false;
    if (Qt::Key_0 <= key && key <= Qt::Key_9)
        return true;
    // Which sign Shift makes of a digit depends on the keyboard, where the digits are does not: X11 and Wayland
    // number the keys of the top row 10 to 19.
    if (event.nativeScanCode() != 0)
        return isWithin(event.nativeScanCode(), 10, 19);
    return event.modifiers().testFlag(Qt::ShiftModifier) && isSignOnDigit(key);
}

} // namespace quillon
