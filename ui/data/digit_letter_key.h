#pragma once

class QKeyEvent;

namespace quillon
{

/// Whether a key is a letter or a digit of the top row, whatever Shift and Ctrl make of it. The number pad is not.
bool isDigitOrLetterKey(const QKeyEvent& event);

} // namespace quillon
