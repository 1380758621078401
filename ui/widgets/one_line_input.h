#pragma once

class QLineEdit;

namespace quillon
{

/// Turns every line break and tab that comes into a field of one line (pasted, dropped, from an input method) into one
/// blank. What the program puts there stays as it is. Undoing takes the text back as one change.
void keepInputOnOneLine(QLineEdit& field);

} // namespace quillon
