#pragma once

#include <QRect>
#include <QScreen>
#include <QSize>
#include <QWidget>

#include <algorithm>

namespace quillon
{

/// The thickness of a frame that the window manager has not told yet: that of both sides.
inline constexpr QSize UsualFrame(16, 40);

/// The room for a window on its screen, inside such a frame.
inline QSize roomInUsualFrame(const QWidget& window)
{
    return window.screen()->availableSize() - UsualFrame;
}

/// The place moved so far that it lies on the screen; its upper left corner does in any case.
inline QRect placeOnScreen(QRect place, const QRect& screen)
{
    place.moveLeft(std::max(screen.left(), std::min(place.left(), screen.right() + 1 - place.width())));
    place.moveTop(std::max(screen.top(), std::min(place.top(), screen.bottom() + 1 - place.height())));
    return place;
}

} // namespace quillon
