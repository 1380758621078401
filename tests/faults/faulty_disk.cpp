#include "tests/faults/faulty_disk.h"

#include <sqlite3.h>

#include <cerrno>
#include <utility>

namespace quillon::testing
{

namespace
{

// What the system says of a failure, by its own number.
#ifdef Q_OS_WIN
constexpr int NoRoom = 112;      // ERROR_DISK_FULL
constexpr int OverQuota = 1295;  // ERROR_DISK_QUOTA_EXCEEDED
constexpr int BrokenDisk = 1117; // ERROR_IO_DEVICE
constexpr int BrokenOff = 995;   // ERROR_OPERATION_ABORTED
#else
constexpr int NoRoom = ENOSPC;
constexpr int OverQuota = EDQUOT;
constexpr int BrokenDisk = EIO;
constexpr int BrokenOff = EINTR;
#endif

constexpr const char* ForLongPaths = "win32-longpath";

/// The system's disk that the program uses.
sqlite3_vfs* systemDisk()
{
    // Once there is a faulty one, the question would name that. The engine wants it without const.
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
    static sqlite3_vfs* const system = [] {
        sqlite3_vfs* const forLongPaths = sqlite3_vfs_find(ForLongPaths);
        return forLongPaths != nullptr ? forLongPaths : sqlite3_vfs_find(nullptr);
    }();
    return system;
}

/// A file of the system with what is to be known about it; the system's own part follows in memory.
struct FaultyFile {
    sqlite3_file base;
    QString* path;
    bool isNewJournal; // the first sync of one syncs the folder's names, too
};

// The system's part must be aligned like the whole.
constexpr std::size_t PlaceOfSystemPart = (sizeof(FaultyFile) + alignof(std::max_align_t) - 1) /
                                          alignof(std::max_align_t) * alignof(std::max_align_t);

FaultyFile* own(sqlite3_file* file)
{
    return reinterpret_cast<FaultyFile*>(file);
}

sqlite3_file* below(sqlite3_file* file)
{
    return reinterpret_cast<sqlite3_file*>(reinterpret_cast<char*>(file) + PlaceOfSystemPart);
}

FaultyDisk& disk()
{
    return FaultyDisk::instance();
}

QString folderOf(const QString& path)
{
    return path.left(path.lastIndexOf(u'/'));
}

int failing(int code, int systemError)
{
    disk().setLastError(systemError);
    return code;
}

int systemErrorOf(DiskFailure failure)
{
    switch (failure) {
    case DiskFailure::Full:
    case DiskFailure::ShortWrite:
        return NoRoom;
    case DiskFailure::Quota:
        return OverQuota;
    case DiskFailure::Interrupted:
        return BrokenOff;
    default:
        return BrokenDisk;
    }
}

/// Fails as planned, with `code`, or does it.
template <class Do> int unlessFailing(DiskCall call, int code, Do&& work)
{
    DiskFailure failure = DiskFailure::Broken;
    if (!disk().failsNow(call, failure))
        return std::forward<Do>(work)();
    if (failure == DiskFailure::DoneAndBroken)
        std::forward<Do>(work)();
    return failing(code, systemErrorOf(failure));
}

int closeFile(sqlite3_file* file)
{
    const int code = below(file)->pMethods->xClose(below(file));
    delete own(file)->path;
    file->pMethods = nullptr;
    return code;
}

int readFile(sqlite3_file* file, void* target, int count, sqlite3_int64 from)
{
    return unlessFailing(DiskCall::Read, SQLITE_IOERR_READ,
                         [&] { return below(file)->pMethods->xRead(below(file), target, count, from); });
}

int writeNow(sqlite3_file* file, const void* source, int count, sqlite3_int64 to)
{
    disk().note({.kind = DiskEvent::Kind::Write,
                 .path = *own(file)->path,
                 .at = to,
                 .bytes = QByteArray(static_cast<const char*>(source), count)});
    return below(file)->pMethods->xWrite(below(file), source, count, to);
}

int writeFile(sqlite3_file* file, const void* source, int count, sqlite3_int64 to)
{
    DiskFailure failure = DiskFailure::Broken;
    if (!disk().failsNow(DiskCall::Write, failure))
        return writeNow(file, source, count, to);
    switch (failure) {
    case DiskFailure::Full:
        return failing(SQLITE_FULL, NoRoom);
    case DiskFailure::ShortWrite:
        writeNow(file, source, count / 2, to);
        return failing(SQLITE_FULL, NoRoom);
    case DiskFailure::DoneAndBroken:
        writeNow(file, source, count, to);
        return failing(SQLITE_IOERR_WRITE, BrokenDisk);
    case DiskFailure::Quota:
        return failing(SQLITE_IOERR_WRITE, OverQuota);
    default:
        return failing(SQLITE_IOERR_WRITE, BrokenDisk);
    }
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size)
{
    return unlessFailing(DiskCall::Truncate, SQLITE_IOERR_TRUNCATE, [&] {
        disk().note({.kind = DiskEvent::Kind::Resize, .path = *own(file)->path, .at = size});
        return below(file)->pMethods->xTruncate(below(file), size);
    });
}

int syncFile(sqlite3_file* file, int flags)
{
    return unlessFailing(DiskCall::Sync, SQLITE_IOERR_FSYNC, [&] {
        disk().note({.kind = DiskEvent::Kind::Sync, .path = *own(file)->path});
        if (std::exchange(own(file)->isNewJournal, false))
            disk().note({.kind = DiskEvent::Kind::SyncNames, .path = folderOf(*own(file)->path)});
        return below(file)->pMethods->xSync(below(file), flags);
    });
}

int sizeOfFile(sqlite3_file* file, sqlite3_int64* size)
{
    return unlessFailing(DiskCall::Size, SQLITE_IOERR_FSTAT,
                         [&] { return below(file)->pMethods->xFileSize(below(file), size); });
}

int lockFile(sqlite3_file* file, int level)
{
    return unlessFailing(DiskCall::Lock, SQLITE_IOERR_LOCK,
                         [&] { return below(file)->pMethods->xLock(below(file), level); });
}

int unlockFile(sqlite3_file* file, int level)
{
    return unlessFailing(DiskCall::Unlock, SQLITE_IOERR_UNLOCK,
                         [&] { return below(file)->pMethods->xUnlock(below(file), level); });
}

int checkReservedLock(sqlite3_file* file, int* reserved)
{
    return unlessFailing(DiskCall::AskLock, SQLITE_IOERR_CHECKRESERVEDLOCK,
                         [&] { return below(file)->pMethods->xCheckReservedLock(below(file), reserved); });
}

int controlFile(sqlite3_file* file, int operation, void* argument)
{
    if (operation == SQLITE_FCNTL_LAST_ERRNO && disk().lastError() != 0) {
        *static_cast<int*>(argument) = disk().lastError();
        return SQLITE_OK;
    }
    return below(file)->pMethods->xFileControl(below(file), operation, argument);
}

int sectorSizeOf(sqlite3_file* file)
{
    return below(file)->pMethods->xSectorSize(below(file));
}

int characteristicsOf(sqlite3_file* file)
{
    return below(file)->pMethods->xDeviceCharacteristics(below(file));
}

const sqlite3_io_methods& faultyMethods()
{
    static const sqlite3_io_methods methods = [] {
        sqlite3_io_methods own = {};
        own.iVersion = 1;
        own.xClose = closeFile;
        own.xRead = readFile;
        own.xWrite = writeFile;
        own.xTruncate = truncateFile;
        own.xSync = syncFile;
        own.xFileSize = sizeOfFile;
        own.xLock = lockFile;
        own.xUnlock = unlockFile;
        own.xCheckReservedLock = checkReservedLock;
        own.xFileControl = controlFile;
        own.xSectorSize = sectorSizeOf;
        own.xDeviceCharacteristics = characteristicsOf;
        return own;
    }();
    return methods;
}

bool isThere(const char* name)
{
    int exists = 0;
    return systemDisk()->xAccess(systemDisk(), name, SQLITE_ACCESS_EXISTS, &exists) == SQLITE_OK &&
           exists != 0;
}

int openFile(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags)
{
    file->pMethods = nullptr;
    DiskFailure failure = DiskFailure::Broken;
    if (disk().failsNow(DiskCall::Open, failure))
        return failing(SQLITE_CANTOPEN, failure == DiskFailure::Full ? EMFILE : systemErrorOf(failure));
    const bool isNew = name != nullptr && (flags & SQLITE_OPEN_CREATE) != 0 && !isThere(name);
    const int code = systemDisk()->xOpen(systemDisk(), name, below(file), flags, outFlags);
    if (below(file)->pMethods == nullptr)
        return code;
    constexpr int Journals = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL | SQLITE_OPEN_WAL;
    own(file)->path = new QString(QString::fromUtf8(name));
    own(file)->isNewJournal = (flags & Journals) != 0 && (flags & SQLITE_OPEN_CREATE) != 0;
    file->pMethods = &faultyMethods();
    if (isNew)
        disk().note({.kind = DiskEvent::Kind::Make, .path = *own(file)->path});
    return code;
}

int removeFile(sqlite3_vfs*, const char* name, int syncFolder)
{
    const auto removal = [&] {
        const bool was = isThere(name);
        const int code = systemDisk()->xDelete(systemDisk(), name, syncFolder);
        if (was && code == SQLITE_OK)
            disk().note({.kind = DiskEvent::Kind::Unlink, .path = QString::fromUtf8(name)});
        if (code == SQLITE_OK && syncFolder != 0)
            disk().note({.kind = DiskEvent::Kind::SyncNames, .path = folderOf(QString::fromUtf8(name))});
        return code;
    };
    DiskFailure failure = DiskFailure::Broken;
    if (!disk().failsNow(DiskCall::Delete, failure))
        return removal();
    if (failure != DiskFailure::DoneAndBroken)
        return failing(SQLITE_IOERR_DELETE, systemErrorOf(failure));
    removal();
    return failing(SQLITE_IOERR_DIR_FSYNC, BrokenDisk);
}

int askForFile(sqlite3_vfs*, const char* name, int question, int* answer)
{
    return unlessFailing(DiskCall::Exists, SQLITE_IOERR_ACCESS,
                         [&] { return systemDisk()->xAccess(systemDisk(), name, question, answer); });
}

int lastErrorOf(sqlite3_vfs*, int, char*)
{
    return disk().lastError() != 0 ? disk().lastError() : errno;
}

} // namespace

bool canFail(DiskCall call, DiskFailure failure)
{
    switch (failure) {
    case DiskFailure::Broken:
        return true;
    case DiskFailure::Full:
        return call == DiskCall::Write || call == DiskCall::Open;
    case DiskFailure::ShortWrite:
        return call == DiskCall::Write;
    case DiskFailure::DoneAndBroken:
        return call == DiskCall::Write || call == DiskCall::Truncate || call == DiskCall::Sync ||
               call == DiskCall::Delete;
    case DiskFailure::Quota:
        return call == DiskCall::Write || call == DiskCall::Open || call == DiskCall::Sync;
    case DiskFailure::Interrupted:
        return call == DiskCall::Sync || call == DiskCall::Size || call == DiskCall::Delete;
    case DiskFailure::Count:
        break;
    }
    return false;
}

FaultyDisk& FaultyDisk::instance()
{
    static FaultyDisk only;
    return only;
}

FaultyDisk::FaultyDisk()
{
    static sqlite3_vfs faulty = *systemDisk();
    faulty.pNext = nullptr;
    faulty.zName = "faulty";
    if (sqlite3_vfs_find(ForLongPaths) != nullptr) {
        // The program asks for it by its name.
        faulty.zName = ForLongPaths;
        sqlite3_vfs_unregister(systemDisk());
    }
    faulty.szOsFile = static_cast<int>(PlaceOfSystemPart) + systemDisk()->szOsFile;
    faulty.xOpen = openFile;
    faulty.xDelete = removeFile;
    faulty.xAccess = askForFile;
    faulty.xGetLastError = lastErrorOf;
    sqlite3_vfs_register(&faulty, 1);
}

void FaultyDisk::failAt(int number, DiskFailure failure, Duration duration)
{
    m_failing = number;
    m_failure = failure;
    m_duration = duration;
    m_number = 0;
    m_hasFailed = false;
    m_lastError = 0;
    m_calls = {};
}

int FaultyDisk::heal()
{
    m_failing = 0;
    m_lastError = 0;
    return m_number;
}

void FaultyDisk::startRecording()
{
    m_events.clear();
    m_records = true;
}

std::vector<DiskEvent> FaultyDisk::stopRecording()
{
    m_records = false;
    return std::exchange(m_events, {});
}

void FaultyDisk::mark(int number)
{
    note({.kind = DiskEvent::Kind::Mark, .at = number});
}

bool FaultyDisk::failsNow(DiskCall call, DiskFailure& failure)
{
    m_lastError = 0;
    ++m_number;
    ++m_calls.at(static_cast<std::size_t>(call));
    if (m_failing == 0 || !canFail(call, m_failure))
        return false;
    if (m_duration == Duration::Once ? m_number != m_failing : m_number < m_failing)
        return false;
    if (!m_hasFailed)
        m_failedCall = call;
    m_hasFailed = true;
    failure = m_failure;
    return true;
}

void FaultyDisk::note(DiskEvent event)
{
    if (m_records)
        m_events.push_back(std::move(event));
}

} // namespace quillon::testing
