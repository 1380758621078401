#include "app/base/platform/memory.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <new>

namespace quillon::platform
{

void keepFreedMemory()
{
#ifdef __GLIBC__
    constexpr int Kept = 512 * 1024 * 1024; // bytes at the end of the heap
    constexpr int Step = 16 * 1024 * 1024;
    mallopt(M_MMAP_MAX, 0); // large blocks, too, come from the heap
    mallopt(M_TRIM_THRESHOLD, Kept);
    mallopt(M_TOP_PAD, Step);
#endif
}

void LargeMemoryReturner::operator()(void* memory) const
{
    std::free(memory);
}

LargeMemory largeMemory(std::size_t bytes)
{
    // From the heap, which keeps what is given back: memory that is new to the process costs more than filling it.
    void* const memory = std::malloc(bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    constexpr std::size_t LargePage = std::size_t{2} << 20;
    if (bytes >= LargePage) {
        const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        const auto start = reinterpret_cast<std::uintptr_t>(memory);
        const std::uintptr_t first = (start + page - 1) / page * page;
        const std::uintptr_t end = (start + bytes) / page * page;
        // Where the system refuses, small pages do.
        madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
    }
    return LargeMemory(memory, {bytes});
}

} // namespace quillon::platform
