#pragma once

#include <QByteArray>
#include <QtGlobal>

#ifdef Q_OS_UNIX

#include <sqlite3.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <map>

#include <sys/types.h>

namespace quillon::testing
{

/// Stands between SQLite and the system as long as it lives: `before` is asked before each call that opens, reads,
/// writes, shortens or removes a file, and answers the error in which it is to end, or 0. To be made while no file is
/// open.
class SystemCalls
{
public:
    using Before = std::function<int(const QByteArray& call, const QByteArray& path)>;

    explicit SystemCalls(Before before)
    {
        current() = this;
        m_before = std::move(before);
        replace("open", reinterpret_cast<sqlite3_syscall_ptr>(openFile));
        for (const char* name : {"read", "pread", "pread64"})
            replace(name, name[0] == 'r' ? reinterpret_cast<sqlite3_syscall_ptr>(readFile)
                                         : reinterpret_cast<sqlite3_syscall_ptr>(preadFile));
        for (const char* name : {"write", "pwrite", "pwrite64"})
            replace(name, name[0] == 'w' ? reinterpret_cast<sqlite3_syscall_ptr>(writeFile)
                                         : reinterpret_cast<sqlite3_syscall_ptr>(pwriteFile));
        replace("unlink", reinterpret_cast<sqlite3_syscall_ptr>(unlinkFile));
        replace("ftruncate", reinterpret_cast<sqlite3_syscall_ptr>(truncateFile));
    }
    ~SystemCalls()
    {
        for (const auto& [name, call] : m_replaced)
            files()->xSetSystemCall(files(), name, nullptr);
        current() = nullptr;
    }
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

private:
    static sqlite3_vfs* files() { return sqlite3_vfs_find(nullptr); }
    static SystemCalls*& current()
    {
        static SystemCalls* one = nullptr;
        return one;
    }
    void replace(const char* name, sqlite3_syscall_ptr with)
    {
        const sqlite3_syscall_ptr present = files()->xGetSystemCall(files(), name);
        if (present == nullptr)
            return; // this SQLite does without it
        m_replaced[name] = present;
        if (files()->xSetSystemCall(files(), name, with) != SQLITE_OK)
            qFatal("cannot replace a system call");
    }
    /// Whether the call is to go on.
    static bool goesOn(const char* call, const char* path = "")
    {
        const int failure = current()->m_before(call, path);
        if (failure != 0)
            errno = failure;
        return failure == 0;
    }
    template <class Call> static Call systems(std::initializer_list<const char*> names)
    {
        for (const char* name : names) {
            if (const auto found = current()->m_replaced.find(name); found != current()->m_replaced.end())
                return reinterpret_cast<Call>(found->second);
        }
        std::abort();
    }

    static int openFile(const char* path, int flags, int mode)
    {
        using Call = int (*)(const char*, int, int);
        return goesOn("open", path) ? systems<Call>({"open"})(path, flags, mode) : -1;
    }
    static ssize_t readFile(int file, void* target, size_t count)
    {
        using Call = ssize_t (*)(int, void*, size_t);
        return goesOn("read") ? systems<Call>({"read"})(file, target, count) : -1;
    }
    static ssize_t preadFile(int file, void* target, size_t count, off_t from)
    {
        using Call = ssize_t (*)(int, void*, size_t, off_t);
        return goesOn("read") ? systems<Call>({"pread64", "pread"})(file, target, count, from) : -1;
    }
    static ssize_t writeFile(int file, const void* source, size_t count)
    {
        using Call = ssize_t (*)(int, const void*, size_t);
        return goesOn("write") ? systems<Call>({"write"})(file, source, count) : -1;
    }
    static ssize_t pwriteFile(int file, const void* source, size_t count, off_t to)
    {
        using Call = ssize_t (*)(int, const void*, size_t, off_t);
        return goesOn("write") ? systems<Call>({"pwrite64", "pwrite"})(file, source, count, to) : -1;
    }
    static int unlinkFile(const char* path)
    {
        using Call = int (*)(const char*);
        return goesOn("unlink", path) ? systems<Call>({"unlink"})(path) : -1;
    }
    static int truncateFile(int file, off_t size)
    {
        using Call = int (*)(int, off_t);
        return goesOn("truncate") ? systems<Call>({"ftruncate"})(file, size) : -1;
    }

    Before m_before;
    std::map<const char*, sqlite3_syscall_ptr, bool (*)(const char*, const char*)> m_replaced{
        [](const char* a, const char* b) { return qstrcmp(a, b) < 0; }};
};

} // namespace quillon::testing

#endif
