#pragma once

#include <cstddef>
#include <memory>

namespace quillon::platform
{

/// Lets the process keep what a long list gives back, for the next one: otherwise every list that is shown asks the
/// system for its memory again, page by page. To be called once, when the program starts.
void keepFreedMemory();

struct LargeMemoryReturner {
    void operator()(void* memory) const;
    std::size_t bytes = 0;
};

using LargeMemory = std::unique_ptr<void, LargeMemoryReturner>;

/// Memory for many megabytes that are gone through from end to end, in large pages where the system has them: with small
/// ones, finding the pages takes as long as reading what stands in them.
LargeMemory largeMemory(std::size_t bytes);

} // namespace quillon::platform
