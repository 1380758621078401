#pragma once

#include <QFontMetrics>
#include <QWidget>

namespace quillon
{

/// The width at which a window shows its whole title beside the buttons of its title bar.
inline int widthForTitle(const QWidget& window)
{
    const QFontMetrics metrics = window.fontMetrics();
    return metrics.horizontalAdvance(window.windowTitle()) + 8 * metrics.height();
}

} // namespace quillon
