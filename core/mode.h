#pragma once

#include <QtGlobal>

namespace quillon
{

/// What a mode says about the boxes of an operation: 1 and 3 ask before it.
inline bool asks(qint16 mode)
{
    return mode == 1 || mode == 3;
}

/// 2 and more tell after it; 0 is silent.
inline bool tells(qint16 mode)
{
    return mode >= 2;
}

} // namespace quillon
