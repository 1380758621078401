#pragma once

#include <QtGlobal>
#include <QtMath>

namespace quillon
{

/// Twips in one device-independent pixel; written lengths are in twips (1/1440 inch).
inline constexpr double TwipsPerPixel = 15.0;

/// A length in twips as whole device-independent pixels.
inline int pixelsFromTwips(double twips)
{
    return qRound(twips / TwipsPerPixel);
}

/// A length in device-independent pixels as twips.
inline double twipsFromPixels(int pixels)
{
    return pixels * TwipsPerPixel;
}

} // namespace quillon
