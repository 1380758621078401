#include "store/sqlite/inspected_file.h"

#include "store/sqlite/troubles.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <vector>

namespace quillon::sqlite
{

namespace
{

/// A file of the system below what has been written over it.
class FileView
{
public:
    explicit FileView(sqlite3_vfs* system) : m_system(system) {}
    ~FileView()
    {
        if (m_isOpen)
            below()->pMethods->xClose(below());
    }
    FileView(const FileView&) = delete;
    FileView& operator=(const FileView&) = delete;

    /// A file that is not there is an empty one.
    int open(const char* name, int flags)
    {
        int exists = 0;
        const int asked = m_system->xAccess(m_system, name, SQLITE_ACCESS_EXISTS, &exists);
        if (asked != SQLITE_OK)
            return asked;
        // To SQLite an empty file is not there. The database itself is: its connection has asked.
        if (exists == 0 && (flags & SQLITE_OPEN_MAIN_DB) == 0)
            return (flags & SQLITE_OPEN_CREATE) != 0 ? SQLITE_OK : SQLITE_CANTOPEN;
        // SQLite's own memory is aligned for whatever stands in it.
        m_below.assign(static_cast<std::size_t>(m_system->szOsFile) / sizeof(std::max_align_t) + 1, {});
        const int readOnly = (flags & ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) | SQLITE_OPEN_READONLY;
        const int code = openTelling(m_system, name, below(), readOnly, nullptr);
        m_isOpen = below()->pMethods != nullptr;
        // A journal may have been taken away since the question: another program has finished its write.
        const bool isJournal = (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0;
        if (code != SQLITE_OK && isJournal && !m_isOpen &&
            m_system->xAccess(m_system, name, SQLITE_ACCESS_EXISTS, &exists) == SQLITE_OK && exists == 0)
            return SQLITE_OK;
        return code;
    }

    int read(char* target, std::int64_t count, std::int64_t from)
    {
        std::int64_t size = 0;
        if (const int code = fileSize(size); code != SQLITE_OK)
            return code;
        std::memset(target, 0, static_cast<std::size_t>(count));
        const std::int64_t end = std::min(from + count, size);
        for (std::int64_t at = from; at < end;) {
            const std::int64_t start = at / BlockSize * BlockSize;
            const std::int64_t piece = std::min(start + BlockSize, end) - at;
            if (const auto written = m_written.find(start); written != m_written.end())
                std::memcpy(target, written->second.data() + (at - start), static_cast<std::size_t>(piece));
            else if (const int code = readBelow(target, piece, at); code != SQLITE_OK)
                return code;
            target += piece;
            at += piece;
        }
        return end < from + count ? SQLITE_IOERR_SHORT_READ : SQLITE_OK;
    }

    int write(const char* source, std::int64_t count, std::int64_t to)
    {
        std::int64_t size = 0;
        if (const int code = fileSize(size); code != SQLITE_OK)
            return code;
        const std::int64_t end = to + count;
        for (std::int64_t at = to; at < end;) {
            const std::int64_t start = at / BlockSize * BlockSize;
            const std::int64_t piece = std::min(start + BlockSize, end) - at;
            auto block = m_written.find(start);
            if (block == m_written.end()) {
                Block fresh = {};
                if (const int code = readBelow(fresh.data(), BlockSize, start); code != SQLITE_OK)
                    return code;
                block = m_written.emplace(start, fresh).first;
            }
            std::memcpy(block->second.data() + (at - start), source, static_cast<std::size_t>(piece));
            source += piece;
            at += piece;
        }
        resize(std::max(size, end), size);
        return SQLITE_OK;
    }

    int truncate(std::int64_t size)
    {
        std::int64_t before = 0;
        if (const int code = fileSize(before); code != SQLITE_OK)
            return code;
        if (size < before) {
            m_written.erase(m_written.lower_bound((size + BlockSize - 1) / BlockSize * BlockSize),
                            m_written.end());
            const std::int64_t start = size / BlockSize * BlockSize;
            if (const auto last = m_written.find(start); last != m_written.end())
                std::fill(last->second.begin() + (size - start), last->second.end(), '\0');
        }
        resize(size, before);
        return SQLITE_OK;
    }

    int fileSize(std::int64_t& size)
    {
        if (m_isResized) {
            size = m_size;
            return SQLITE_OK;
        }
        size = 0;
        sqlite3_int64 found = 0;
        const int code = m_isOpen ? below()->pMethods->xFileSize(below(), &found) : SQLITE_OK;
        size = found;
        return code;
    }

    // Whoever only looks needs no more than that nobody writes meanwhile.
    int lock(int level)
    {
        return m_isOpen && level == SQLITE_LOCK_SHARED ? below()->pMethods->xLock(below(), level) : SQLITE_OK;
    }
    int unlock(int level) { return m_isOpen ? below()->pMethods->xUnlock(below(), level) : SQLITE_OK; }
    int checkReservedLock(int& reserved)
    {
        reserved = 0;
        return m_isOpen ? below()->pMethods->xCheckReservedLock(below(), &reserved) : SQLITE_OK;
    }
    int sectorSize()
    {
        return m_isOpen ? below()->pMethods->xSectorSize(below()) : static_cast<int>(BlockSize);
    }
    /// How much a broken write spoils beside itself: how large the parts of a journal are depends on it, and one of the
    /// system's own kind is to be understood.
    int characteristics()
    {
        return m_isOpen
                   ? below()->pMethods->xDeviceCharacteristics(below()) & SQLITE_IOCAP_POWERSAFE_OVERWRITE
                   : 0;
    }

private:
    static constexpr std::int64_t BlockSize = 4096;
    using Block = std::array<char, BlockSize>;

    sqlite3_file* below() { return reinterpret_cast<sqlite3_file*>(m_below.data()); }

    /// What stands in the file itself, and zeros behind its end.
    int readBelow(char* target, std::int64_t count, std::int64_t from)
    {
        const std::int64_t end = m_isResized ? std::min(from + count, m_leastSize) : from + count;
        if (!m_isOpen || end <= from)
            return SQLITE_OK;
        const int code = below()->pMethods->xRead(below(), target, static_cast<int>(end - from), from);
        return code == SQLITE_IOERR_SHORT_READ ? SQLITE_OK : code;
    }
    void resize(std::int64_t size, std::int64_t before)
    {
        m_leastSize = std::min(m_isResized ? m_leastSize : before, size);
        m_size = size;
        m_isResized = true;
    }

    sqlite3_vfs* m_system;
    std::vector<std::max_align_t> m_below;
    bool m_isOpen = false;
    std::map<std::int64_t, Block> m_written; // by where they begin
    bool m_isResized = false;
    std::int64_t m_size = 0;
    std::int64_t m_leastSize = 0; // behind this nothing of the file itself shows any more
};

/// The file as SQLite holds it.
struct InspectedFile {
    sqlite3_file base;
    FileView* view;
};

FileView& viewOf(sqlite3_file* file)
{
    return *reinterpret_cast<InspectedFile*>(file)->view;
}

/// No exception may pass through SQLite.
template <class Operation> int withinMemory(Operation&& operation)
{
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    }
}

int closeFile(sqlite3_file* file)
{
    delete reinterpret_cast<InspectedFile*>(file)->view;
    file->pMethods = nullptr;
    return SQLITE_OK;
}

int readFile(sqlite3_file* file, void* target, int count, sqlite3_int64 from)
{
    return viewOf(file).read(static_cast<char*>(target), count, from);
}

int writeFile(sqlite3_file* file, const void* source, int count, sqlite3_int64 to)
{
    return withinMemory([&] { return viewOf(file).write(static_cast<const char*>(source), count, to); });
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size)
{
    return viewOf(file).truncate(size);
}

int syncFile(sqlite3_file*, int)
{
    return SQLITE_OK;
}

int sizeOfFile(sqlite3_file* file, sqlite3_int64* size)
{
    std::int64_t found = 0;
    const int code = viewOf(file).fileSize(found);
    *size = found;
    return code;
}

int lockFile(sqlite3_file* file, int level)
{
    return viewOf(file).lock(level);
}

int unlockFile(sqlite3_file* file, int level)
{
    return viewOf(file).unlock(level);
}

int checkReservedLock(sqlite3_file* file, int* reserved)
{
    return viewOf(file).checkReservedLock(*reserved);
}

int controlFile(sqlite3_file*, int, void*)
{
    return SQLITE_NOTFOUND;
}

int sectorSizeOf(sqlite3_file* file)
{
    return viewOf(file).sectorSize();
}

int characteristicsOf(sqlite3_file* file)
{
    return viewOf(file).characteristics();
}

sqlite3_io_methods inspectionMethods()
{
    sqlite3_io_methods methods = {};
    methods.iVersion = 1; // without memory that is shared with others
    methods.xClose = closeFile;
    methods.xRead = readFile;
    methods.xWrite = writeFile;
    methods.xTruncate = truncateFile;
    methods.xSync = syncFile;
    methods.xFileSize = sizeOfFile;
    methods.xLock = lockFile;
    methods.xUnlock = unlockFile;
    methods.xCheckReservedLock = checkReservedLock;
    methods.xFileControl = controlFile;
    methods.xSectorSize = sectorSizeOf;
    methods.xDeviceCharacteristics = characteristicsOf;
    return methods;
}

} // namespace

int openInspected(sqlite3_vfs* system, const char* name, sqlite3_file* file, int flags, int* outFlags)
{
    file->pMethods = nullptr;
    constexpr int Known = SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL;
    if ((flags & Known) == 0)
        return SQLITE_CANTOPEN;
    return withinMemory([&] {
        static const sqlite3_io_methods methods = inspectionMethods();
        auto view = std::make_unique<FileView>(system);
        if (const int code = view->open(name, flags); code != SQLITE_OK)
            return code;
        reinterpret_cast<InspectedFile*>(file)->view = view.release();
        file->pMethods = &methods;
        if (outFlags != nullptr)
            *outFlags = flags;
        return SQLITE_OK;
    });
}

int sizeOfInspected()
{
    return static_cast<int>(sizeof(InspectedFile));
}

} // namespace quillon::sqlite
