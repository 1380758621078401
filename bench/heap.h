#pragma once

#include <malloc.h>

namespace quillon::bench
{

/// Bytes of this process's heap that are in use.
inline double heapInUse()
{
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
}

} // namespace quillon::bench
