#pragma once

class QDialog;
class QMessageBox;
class QWidget;

namespace quillon
{

/// How wide a message box can be on its screen.
int widestBox(const QWidget& box);

/// Lets the text of a box scroll that would make it larger than the screen; else the box is as the toolkit makes it.
void keepTextOnScreen(QMessageBox& box);

/// Makes a dialog as small as its screen when it is larger. Where its controls need more than that they scroll. To be
/// called when all of them are there.
void keepOnScreen(QDialog& dialog);

} // namespace quillon
