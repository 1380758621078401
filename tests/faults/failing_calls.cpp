#include "tests/faults/failing_calls.h"

#ifdef Q_OS_LINUX

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace
{

struct {
    int failing = 0; // 0: nothing fails
    int failure = 0;
    bool staysFailing = false;
    int count = 0;
    const char* failed = nullptr;
} plan; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the wrapped calls know no object

/// Whether the call that comes now is to end in `plan.failure`.
bool failsNow(const char* call)
{
    using quillon::testing::FailingCalls;
    if (plan.failing == 0)
        return false;
    ++plan.count;
    if (plan.staysFailing ? plan.count < plan.failing : plan.count != plan.failing)
        return false;
    if (plan.failure == FailingCalls::ShortWrite && std::strcmp(call, "write") != 0)
        return false;
    if (plan.failed == nullptr)
        plan.failed = call;
    if (plan.failure != FailingCalls::ShortWrite)
        errno = plan.failure;
    return true;
}

} // namespace

// The names are the linker's.
// NOLINTBEGIN(readability-identifier-naming,bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp)
extern "C" {
int __real_open(const char* path, int flags, ...);
ssize_t __real_read(int file, void* target, std::size_t size);
ssize_t __real_write(int file, const void* source, std::size_t size);
int __real_fsync(int file);
int __real_fstat(int file, struct stat* status);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);
int __real_linkat(int from, const char* path, int to, const char* name, int flags);
int __real_mkdir(const char* path, mode_t mode);
int __real_rmdir(const char* path);

int __wrap_open(const char* path, int flags, ...)
{
    std::va_list rest;
    va_start(rest, flags);
    const bool makes = (flags & (O_CREAT | O_TMPFILE)) != 0;
    const mode_t mode = makes ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return failsNow("open") ? -1 : __real_open(path, flags, mode);
}

ssize_t __wrap_read(int file, void* target, std::size_t size)
{
    return failsNow("read") ? -1 : __real_read(file, target, size);
}

ssize_t __wrap_write(int file, const void* source, std::size_t size)
{
    if (!failsNow("write"))
        return __real_write(file, source, size);
    return plan.failure == quillon::testing::FailingCalls::ShortWrite
               ? __real_write(file, source, (size + 1) / 2)
               : -1;
}

int __wrap_fsync(int file)
{
    return failsNow("fsync") ? -1 : __real_fsync(file);
}

int __wrap_fstat(int file, struct stat* status)
{
    return failsNow("fstat") ? -1 : __real_fstat(file, status);
}

int __wrap_rename(const char* from, const char* to)
{
    return failsNow("rename") ? -1 : __real_rename(from, to);
}

int __wrap_unlink(const char* path)
{
    return failsNow("unlink") ? -1 : __real_unlink(path);
}

int __wrap_linkat(int from, const char* path, int to, const char* name, int flags)
{
    return failsNow("linkat") ? -1 : __real_linkat(from, path, to, name, flags);
}

int __wrap_mkdir(const char* path, mode_t mode)
{
    return failsNow("mkdir") ? -1 : __real_mkdir(path, mode);
}

int __wrap_rmdir(const char* path)
{
    return failsNow("rmdir") ? -1 : __real_rmdir(path);
}
}
// NOLINTEND(readability-identifier-naming,bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp)

namespace quillon::testing
{

void FailingCalls::failAt(int number, int error, Duration duration)
{
    plan.failing = number;
    plan.failure = error;
    plan.staysFailing = duration == Duration::FromThenOn;
    plan.count = 0;
    plan.failed = nullptr;
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
