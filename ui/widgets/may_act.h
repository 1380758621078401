#pragma once

class QWidget;

namespace quillon
{

/// Whether a person could act on a widget now with keyboard or mouse: no other window has to be answered first, and no
/// work goes on that the person can only cancel. Assistive technology acts past both, and is to be asked this.
bool mayActOn(const QWidget& widget);

} // namespace quillon
