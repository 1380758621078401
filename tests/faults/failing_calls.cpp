#include "tests/faults/failing_calls.h"

#ifdef Q_OS_LINUX

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace
{

struct {
    std::atomic<int> failing = 0; // 0: nothing fails
    int failure = 0;
    bool staysFailing = false;
    std::atomic<int> count = 0;
    std::atomic<const char*> failed = nullptr;
} plan; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the calls know no object

/// Whether the call that comes now is to end in `plan.failure`.
bool failsNow(const char* call)
{
    using quillon::testing::FailingCalls;
    if (plan.failing == 0)
        return false;
    const int number = ++plan.count;
    if (plan.staysFailing ? number < plan.failing : number != plan.failing)
        return false;
    const bool writes = std::strstr(call, "write") != nullptr;
    if (plan.failure == FailingCalls::ShortWrite && !writes)
        return false;
    if (plan.failed == nullptr)
        plan.failed = call;
    if (plan.failure != FailingCalls::ShortWrite)
        errno = plan.failure;
    return true;
}

/// The system's own call of a name.
template <class Call> Call* systems(const char* name)
{
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

/// The call of the system, or what is planned instead of it.
template <class Call, class... Arguments>
auto unlessFailing(const char* name, Call* call, Arguments... arguments)
{
    using Result = decltype(call(arguments...));
    return failsNow(name) ? static_cast<Result>(-1) : call(arguments...);
}

template <class Write, class... Place>
ssize_t writeUnlessFailing(const char* name, Write* call, int file, const void* source, std::size_t size,
                           Place... place)
{
    if (!failsNow(name))
        return call(file, source, size, place...);
    const bool isShort = plan.failure == quillon::testing::FailingCalls::ShortWrite;
    return isShort ? call(file, source, (size + 1) / 2, place...) : -1;
}

} // namespace

// The system's names, taken over in the one program that has this source: all its libraries are led here.
// NOLINTBEGIN(readability-identifier-naming,cert-dcl50-cpp,cppcoreguidelines-pro-type-vararg)
extern "C" {
// What a file is opened with follows only where one may be made.
#define QUILLON_OPEN(name)                                                                                   \
    int name(const char* path, int flags, ...)                                                               \
    {                                                                                                        \
        static const auto call = systems<int(const char*, int, ...)>(#name);                                 \
        std::va_list rest;                                                                                   \
        va_start(rest, flags);                                                                               \
        const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;                 \
        va_end(rest);                                                                                        \
        return failsNow(#name) ? -1 : call(path, flags, mode);                                               \
    }
QUILLON_OPEN(open)
QUILLON_OPEN(open64)
#undef QUILLON_OPEN

ssize_t read(int file, void* target, std::size_t size)
{
    static const auto call = systems<ssize_t(int, void*, std::size_t)>("read");
    return unlessFailing("read", call, file, target, size);
}

ssize_t pread64(int file, void* target, std::size_t size, off64_t from)
{
    static const auto call = systems<ssize_t(int, void*, std::size_t, off64_t)>("pread64");
    return unlessFailing("pread64", call, file, target, size, from);
}

ssize_t write(int file, const void* source, std::size_t size)
{
    static const auto call = systems<ssize_t(int, const void*, std::size_t)>("write");
    return writeUnlessFailing("write", call, file, source, size);
}

ssize_t pwrite64(int file, const void* source, std::size_t size, off64_t to)
{
    static const auto call = systems<ssize_t(int, const void*, std::size_t, off64_t)>("pwrite64");
    return writeUnlessFailing("pwrite64", call, file, source, size, to);
}

int ftruncate64(int file, off64_t size) noexcept
{
    static const auto call = systems<int(int, off64_t)>("ftruncate64");
    return unlessFailing("ftruncate64", call, file, size);
}

int fsync(int file)
{
    static const auto call = systems<int(int)>("fsync");
    return unlessFailing("fsync", call, file);
}

int fdatasync(int file)
{
    static const auto call = systems<int(int)>("fdatasync");
    return unlessFailing("fdatasync", call, file);
}

int fstat(int file, struct stat* status) noexcept
{
    static const auto call = systems<int(int, struct stat*)>("fstat");
    return unlessFailing("fstat", call, file, status);
}

int fstat64(int file, struct stat64* status) noexcept
{
    static const auto call = systems<int(int, struct stat64*)>("fstat64");
    return unlessFailing("fstat64", call, file, status);
}

int rename(const char* from, const char* to) noexcept
{
    static const auto call = systems<int(const char*, const char*)>("rename");
    return unlessFailing("rename", call, from, to);
}

int renameat2(int from, const char* path, int to, const char* name, unsigned int flags) noexcept
{
    static const auto call = systems<int(int, const char*, int, const char*, unsigned int)>("renameat2");
    return unlessFailing("renameat2", call, from, path, to, name, flags);
}

int unlink(const char* path) noexcept
{
    static const auto call = systems<int(const char*)>("unlink");
    return unlessFailing("unlink", call, path);
}

int link(const char* from, const char* to) noexcept
{
    static const auto call = systems<int(const char*, const char*)>("link");
    return unlessFailing("link", call, from, to);
}

int linkat(int from, const char* path, int to, const char* name, int flags) noexcept
{
    static const auto call = systems<int(int, const char*, int, const char*, int)>("linkat");
    return unlessFailing("linkat", call, from, path, to, name, flags);
}

int mkdir(const char* path, mode_t mode) noexcept
{
    static const auto call = systems<int(const char*, mode_t)>("mkdir");
    return unlessFailing("mkdir", call, path, mode);
}

int rmdir(const char* path) noexcept
{
    static const auto call = systems<int(const char*)>("rmdir");
    return unlessFailing("rmdir", call, path);
}
}
// NOLINTEND(readability-identifier-naming,cert-dcl50-cpp,cppcoreguidelines-pro-type-vararg)

namespace quillon::testing
{

void FailingCalls::failAt(int number, int error, Duration duration)
{
    plan.failure = error;
    plan.staysFailing = duration == Duration::FromThenOn;
    plan.count = 0;
    plan.failed = nullptr;
    plan.failing = number;
}

int FailingCalls::heal()
{
    plan.failing = 0;
    return plan.count;
}

const char* FailingCalls::failedCall()
{
    return plan.failed;
}

} // namespace quillon::testing

#endif
