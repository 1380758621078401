#pragma once

class QKeyEvent;
class QWidget;

namespace quillon
{

/// Whether an access key (Alt and a character) pressed in a window is answered by `useAccessKey`: where a menu of the
/// window's bar has it. Of a menu and a control with one key the menu wins; a disabled menu leaves it to the control.
bool isAccessKeyOfMenus(const QWidget& window, const QKeyEvent& key);

/// To be told of every press and release of Alt in a window.
void followAlt(const QWidget& window, const QKeyEvent& alt);

/// Opens the menu, or presses the control, whose access key this is.
void useAccessKey(QWidget& window, const QKeyEvent& key);

} // namespace quillon
