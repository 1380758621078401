// Replaces the C library's allocation of a test program, and with it that of all libraries: to be included in one
// source of it.
#pragma once

#include <cerrno>
#include <cstddef>

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
#if defined(__has_feature)
#if !__has_feature(address_sanitizer)
#define QUILLON_MEMORY_CAN_FAIL
#endif
#else
#define QUILLON_MEMORY_CAN_FAIL
#endif
#endif

namespace quillon::testing
{

/// As long as it lives, the large blocks of memory are counted; from the one of a given number on none can be had, or
/// only that one cannot.
class FailingMemory
{
public:
    static constexpr std::size_t Large = std::size_t{1} << 16;
    enum class Duration { FromThenOn, Once };

    explicit FailingMemory(int firstRefused, Duration duration = Duration::FromThenOn,
                           std::size_t large = Large)
    {
        s_left = firstRefused;
        s_stays = duration == Duration::FromThenOn;
        s_large = large;
        s_hasRefused = false;
        s_counts = true;
    }
    ~FailingMemory() { s_counts = false; }
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// Whether any block has been refused so far.
    static bool hasRefused() { return s_hasRefused; }
    static bool refuses(std::size_t bytes)
    {
        if (!s_counts || bytes < s_large)
            return false;
        if (s_left >= 0)
            --s_left;
        if (s_left >= 0 || (s_hasRefused && !s_stays))
            return false;
        s_hasRefused = true;
        return true;
    }

private:
    // What gives memory out knows no object.
    // NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
    inline static bool s_counts = false;
    inline static int s_left = 0;
    inline static bool s_stays = true;
    inline static bool s_hasRefused = false;
    inline static std::size_t s_large = Large;
    // NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)
};

} // namespace quillon::testing

#ifdef QUILLON_MEMORY_CAN_FAIL

// The names of the library, taken over in the one program that includes this with them.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming,misc-definitions-in-headers,readability-inconsistent-declaration-parameter-name)
extern "C" {
void* __libc_malloc(std::size_t bytes) noexcept;
void* __libc_calloc(std::size_t count, std::size_t bytes) noexcept;
void* __libc_realloc(void* block, std::size_t bytes) noexcept;

void* malloc(std::size_t bytes) noexcept
{
    if (!quillon::testing::FailingMemory::refuses(bytes))
        return __libc_malloc(bytes);
    errno = ENOMEM;
    return nullptr;
}

void* calloc(std::size_t count, std::size_t bytes) noexcept
{
    if (!quillon::testing::FailingMemory::refuses(count * bytes))
        return __libc_calloc(count, bytes);
    errno = ENOMEM;
    return nullptr;
}

void* realloc(void* block, std::size_t bytes) noexcept
{
    if (!quillon::testing::FailingMemory::refuses(bytes))
        return __libc_realloc(block, bytes);
    errno = ENOMEM;
    return nullptr;
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming,misc-definitions-in-headers,readability-inconsistent-declaration-parameter-name)

#endif
