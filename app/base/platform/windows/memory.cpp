#include "app/base/platform/memory.h"

#include <windows.h>

#include <new>

namespace quillon::platform
{

void keepFreedMemory() {} // the process heap does so by itself

void LargeMemoryReturner::operator()(void* memory) const
{
    VirtualFree(memory, 0, MEM_RELEASE);
}

LargeMemory largeMemory(std::size_t bytes)
{
    // Large pages would need a privilege that ordinary users do not have.
    void* const memory = VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (memory == nullptr)
        throw std::bad_alloc();
    return LargeMemory(memory, {bytes});
}

} // namespace quillon::platform
