#include "store/sqlite/troubles.h"

#include <QtGlobal>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace quillon::sqlite
{

namespace
{

struct Trouble {
    int code = SQLITE_OK;
    int systemError = 0;
};

// The methods that tell of a trouble are called by SQLite, which carries nothing of ours through to them. Where a write
// fails, undoing it may fail as well, in another way, before the first failure is told: so there is one for each way.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
thread_local std::array<Trouble, 8> lastTroubles; // the latest first

void note(const Trouble& trouble)
{
    const auto isOfTheSameWay = [&](const Trouble& one) { return one.code == trouble.code; };
    auto* place = std::find_if(lastTroubles.begin(), lastTroubles.end(), isOfTheSameWay);
    if (place == lastTroubles.end())
        --place; // the oldest goes
    *place = trouble;
    std::rotate(lastTroubles.begin(), place, place + 1);
}

/// What can be done with a file of the system, with our ears to it.
struct TellingMethods {
    sqlite3_io_methods own; // what SQLite sees, and so the first
    const sqlite3_io_methods* system;
};

const sqlite3_io_methods& systemsOf(sqlite3_file* file)
{
    return *reinterpret_cast<const TellingMethods*>(file->pMethods)->system;
}

int told(sqlite3_file* file, int code)
{
    if (code == SQLITE_OK || code == SQLITE_IOERR_SHORT_READ)
        return code;
    int systemError = 0;
    systemsOf(file).xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &systemError);
    note({.code = code, .systemError = systemError});
    return code;
}

int readTelling(sqlite3_file* file, void* target, int count, sqlite3_int64 from)
{
    const int code = systemsOf(file).xRead(file, target, count, from);
    // SQLite holds a disk that cannot be read for a damaged database. It may be a cable.
    return told(file, code == SQLITE_IOERR_CORRUPTFS ? SQLITE_IOERR_READ : code);
}

int writeTelling(sqlite3_file* file, const void* source, int count, sqlite3_int64 to)
{
    return told(file, systemsOf(file).xWrite(file, source, count, to));
}

int truncateTelling(sqlite3_file* file, sqlite3_int64 size)
{
    return told(file, systemsOf(file).xTruncate(file, size));
}

int syncTelling(sqlite3_file* file, int flags)
{
    return told(file, systemsOf(file).xSync(file, flags));
}

int sizeTelling(sqlite3_file* file, sqlite3_int64* size)
{
    return told(file, systemsOf(file).xFileSize(file, size));
}

/// Null without memory for it.
const sqlite3_io_methods* tellingMethods(const sqlite3_io_methods* system)
{
    static std::mutex mutex;
    static std::map<const sqlite3_io_methods*, std::unique_ptr<TellingMethods>> known; // a few kinds of files
    try {
        const std::lock_guard lock(mutex);
        auto& methods = known[system];
        if (!methods) {
            auto made = std::make_unique<TellingMethods>(TellingMethods{.own = *system, .system = system});
            made->own.xRead = readTelling;
            made->own.xWrite = writeTelling;
            made->own.xTruncate = truncateTelling;
            made->own.xSync = syncTelling;
            made->own.xFileSize = sizeTelling;
            methods = std::move(made);
        }
        return &methods->own;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int lastErrorOf(sqlite3_vfs* system)
{
    return system->xGetLastError != nullptr ? system->xGetLastError(system, 0, nullptr) : 0;
}

#ifdef Q_OS_UNIX
/// Why a file cannot be made. SQLite then tries to open it only to be read, and that it is not there is all it tells.
int whyNotMade(sqlite3_vfs* system, const char* name)
{
    using Open = int (*)(const char*, int, int);
    const auto open = reinterpret_cast<Open>(system->xGetSystemCall(system, "open"));
    if (open == nullptr)
        return ENOENT;
    const int made = open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (made < 0)
        return errno;
    close(made);
    unlink(name);
    return 0;
}
#endif

} // namespace

int openTelling(sqlite3_vfs* system, const char* name, sqlite3_file* file, int flags, int* outFlags)
{
    const int code = system->xOpen(system, name, file, flags, outFlags);
    if (code != SQLITE_OK) {
        int systemError = lastErrorOf(system);
#ifdef Q_OS_UNIX
        if (systemError == ENOENT && name != nullptr && (flags & SQLITE_OPEN_CREATE) != 0)
            systemError = whyNotMade(system, name);
#endif
        note({.code = code, .systemError = systemError});
        return code;
    }
    for (Trouble& trouble : lastTroubles) {
        if ((trouble.code & 0xFF) == SQLITE_CANTOPEN)
            trouble = {};
    }
    if (file->pMethods != nullptr) {
        if (const sqlite3_io_methods* const telling = tellingMethods(file->pMethods))
            file->pMethods = telling;
    }
    return code;
}

int removeTelling(sqlite3_vfs* system, const char* name, int syncFolder)
{
    const int code = system->xDelete(system, name, syncFolder);
    if (code != SQLITE_OK && code != SQLITE_IOERR_DELETE_NOENT)
        note({.code = code, .systemError = lastErrorOf(system)});
    return code;
}

std::optional<int> systemErrorBehind(int code)
{
    const auto* const found = std::find_if(lastTroubles.begin(), lastTroubles.end(),
                                           [code](const Trouble& one) { return one.code == code; });
    if (code == SQLITE_OK || found == lastTroubles.end())
        return std::nullopt;
    return found->systemError;
}

} // namespace quillon::sqlite
