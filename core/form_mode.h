#pragma once

#include <QtGlobal>

namespace quillon
{

class DataWindow;

/// The modes of a data window.
inline constexpr qint16 RegistrationFormMode = 1;
inline constexpr qint16 DisplayFormMode = 2;

/// Switches a data window's menus and its mode text to registration (1) or display (2) mode; any other mode changes
/// nothing. Loading texts stays enabled on the way back to display mode.
void SetFormMode(DataWindow& window, qint16 mode);

} // namespace quillon
