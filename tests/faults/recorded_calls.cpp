#include "tests/faults/recorded_calls.h"

#ifdef Q_OS_LINUX

#include "tests/faults/faulty_disk.h"

#include <QByteArray>
#include <QFile>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace
{

using quillon::testing::DiskEvent;
using quillon::testing::FaultyDisk;

struct {
    QByteArray folder; // empty: nobody listens
    std::set<std::uint64_t> files;
} watched; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the calls know no object

/// The system's own call of a name.
template <class Call> Call* systems(const char* name)
{
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

bool isWatched(const QByteArray& path)
{
    return !watched.folder.isEmpty() && (path == watched.folder || path.startsWith(watched.folder + '/'));
}

/// What asks the system in between leaves its last error as it was.
template <class Note> void noting(Note&& note)
{
    const int error = errno;
    std::forward<Note>(note)();
    errno = error;
}

void note(DiskEvent event)
{
    FaultyDisk::instance().note(std::move(event));
}

/// The number of a watched file; 0 for any other.
std::uint64_t numberOf(int file)
{
    struct stat status = {};
    if (watched.folder.isEmpty() || fstat(file, &status) != 0 || !watched.files.contains(status.st_ino))
        return 0;
    return status.st_ino;
}

void noteOpening(int file, const char* path, int flags, bool wasThere)
{
    struct stat status = {};
    if (file < 0 || !isWatched(path) || fstat(file, &status) != 0 || !S_ISREG(status.st_mode))
        return;
    const bool isNameless = (flags & O_TMPFILE) == O_TMPFILE;
    if (!isNameless && wasThere)
        return;
    watched.files.insert(status.st_ino);
    note({.kind = DiskEvent::Kind::Make,
          .path = isNameless ? QString() : QFile::decodeName(path),
          .file = status.st_ino});
}

void noteSync(int file)
{
    struct stat status = {};
    if (watched.folder.isEmpty() || fstat(file, &status) != 0)
        return;
    if (S_ISDIR(status.st_mode)) {
        const QString path = QFile::symLinkTarget(u"/proc/self/fd/"_s + QString::number(file));
        if (isWatched(QFile::encodeName(path)))
            note({.kind = DiskEvent::Kind::SyncNames, .path = path});
    } else if (const std::uint64_t number = numberOf(file)) {
        note({.kind = DiskEvent::Kind::Sync, .file = number});
    }
}

/// A new name of a file that may have had none: only the process's own list of files leads to such a one.
void noteLink(const QByteArray& from, const char* to)
{
    struct stat status = {};
    if (!isWatched(to))
        return;
    DiskEvent event{.kind = DiskEvent::Kind::Link, .path = QFile::decodeName(to)};
    if (!from.startsWith("/proc/"))
        event.from = QFile::decodeName(from);
    else if (lstat(to, &status) == 0)
        event.file = status.st_ino;
    note(event);
}

void noteRename(const char* from, const char* to)
{
    if (isWatched(from) || isWatched(to))
        note({.kind = DiskEvent::Kind::Rename,
              .path = QFile::decodeName(to),
              .from = QFile::decodeName(from)});
}

void noteName(DiskEvent::Kind kind, const char* path)
{
    if (isWatched(path))
        note({.kind = kind, .path = QFile::decodeName(path)});
}

/// What the system answered; what it has done is noted.
template <class Note> int noted(int result, Note&& whenDone)
{
    if (result >= 0)
        noting(std::forward<Note>(whenDone));
    return result;
}

bool isThere(const char* path)
{
    struct stat status = {};
    const int error = errno;
    const bool found = isWatched(path) && lstat(path, &status) == 0;
    errno = error;
    return found;
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
        const bool wasThere = (flags & O_CREAT) == 0 || isThere(path);                                       \
        const int file = call(path, flags, mode);                                                            \
        return noted(file, [&] { noteOpening(file, path, flags, wasThere); });                               \
    }
QUILLON_OPEN(open)
QUILLON_OPEN(open64)
#undef QUILLON_OPEN

ssize_t write(int file, const void* source, std::size_t size)
{
    static const auto call = systems<ssize_t(int, const void*, std::size_t)>("write");
    const std::uint64_t number = numberOf(file);
    const off_t at = number != 0 ? lseek(file, 0, SEEK_CUR) : 0;
    const ssize_t written = call(file, source, size);
    if (number != 0 && written > 0)
        noting([&] {
            note({.kind = DiskEvent::Kind::Write,
                  .at = at,
                  .bytes = QByteArray(static_cast<const char*>(source), written),
                  .file = number});
        });
    return written;
}

int fsync(int file)
{
    static const auto call = systems<int(int)>("fsync");
    return noted(call(file), [&] { noteSync(file); });
}

int fdatasync(int file)
{
    static const auto call = systems<int(int)>("fdatasync");
    return noted(call(file), [&] { noteSync(file); });
}

int rename(const char* from, const char* to) noexcept
{
    static const auto call = systems<int(const char*, const char*)>("rename");
    return noted(call(from, to), [&] { noteRename(from, to); });
}

int renameat2(int from, const char* path, int to, const char* name, unsigned int flags) noexcept
{
    static const auto call = systems<int(int, const char*, int, const char*, unsigned int)>("renameat2");
    return noted(call(from, path, to, name, flags), [&] { noteRename(path, name); });
}

int unlink(const char* path) noexcept
{
    static const auto call = systems<int(const char*)>("unlink");
    return noted(call(path), [&] { noteName(DiskEvent::Kind::Unlink, path); });
}

int link(const char* from, const char* to) noexcept
{
    static const auto call = systems<int(const char*, const char*)>("link");
    return noted(call(from, to), [&] { noteLink(from, to); });
}

int linkat(int from, const char* path, int to, const char* name, int flags) noexcept
{
    static const auto call = systems<int(int, const char*, int, const char*, int)>("linkat");
    return noted(call(from, path, to, name, flags), [&] { noteLink(path, name); });
}

int mkdir(const char* path, mode_t mode) noexcept
{
    static const auto call = systems<int(const char*, mode_t)>("mkdir");
    return noted(call(path, mode), [&] { noteName(DiskEvent::Kind::MakeFolder, path); });
}

int rmdir(const char* path) noexcept
{
    static const auto call = systems<int(const char*)>("rmdir");
    return noted(call(path), [&] { noteName(DiskEvent::Kind::Unlink, path); });
}
}
// NOLINTEND(readability-identifier-naming,cert-dcl50-cpp,cppcoreguidelines-pro-type-vararg)

namespace quillon::testing
{

RecordedCalls::RecordedCalls(const QString& folder)
{
    watched.folder = QFile::encodeName(folder);
}

RecordedCalls::~RecordedCalls()
{
    watched.folder.clear();
    watched.files.clear();
}

} // namespace quillon::testing

#endif
