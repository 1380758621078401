// Replaces the operators new and delete of a test program: to be included in one source of it.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace quillon::testing
{

/// As long as it lives no block of so many bytes or more can be had.
class ScarceMemory
{
public:
    explicit ScarceMemory(std::size_t leastRefused) { s_leastRefused = leastRefused; }
    ~ScarceMemory() { s_leastRefused = std::numeric_limits<std::size_t>::max(); }
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;

    static bool refuses(std::size_t bytes) { return bytes >= s_leastRefused; }

private:
    inline static std::size_t s_leastRefused = std::numeric_limits<std::size_t>::max();
};

} // namespace quillon::testing

void* operator new(std::size_t bytes)
{
    void* const block = quillon::testing::ScarceMemory::refuses(bytes) ? nullptr : std::malloc(bytes);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*bytes*/) noexcept
{
    std::free(block);
}
