#include "store/sqlite/gathered_writes.h"

#include <sqlite3.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace quillon::sqlite
{

namespace
{

/// SQLite's own way to the system takes less than 128 KB at once.
constexpr std::size_t Room = std::size_t{120} * 1024;

} // namespace

/// What can be done with the file, and what has been gathered for it.
struct GatheredWrites::Methods : sqlite3_io_methods {
    const sqlite3_io_methods* system = nullptr;
    std::vector<char> gathered; // never grows beyond its room
    sqlite3_int64 begin = 0;    // where that belongs

    static Methods& of(const sqlite3_file* file)
    {
        // They are ours, whatever SQLite promises about those of others.
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
        return *const_cast<Methods*>(static_cast<const Methods*>(file->pMethods));
    }

    /// Lets the system do something with the file, which must know its own methods there.
    template <class Action> int below(sqlite3_file* file, Action&& action)
    {
        file->pMethods = system;
        const int code = action(*system);
        file->pMethods = this;
        return code;
    }

    int flush(sqlite3_file* file)
    {
        if (gathered.empty())
            return SQLITE_OK;
        const int code = below(file, [&](const sqlite3_io_methods& methods) {
            return methods.xWrite(file, gathered.data(), static_cast<int>(gathered.size()), begin);
        });
        gathered.clear();
        return code;
    }

    int write(sqlite3_file* file, const void* source, int count, sqlite3_int64 to)
    {
        const auto size = static_cast<std::size_t>(count);
        const bool goesOn = to == begin + static_cast<sqlite3_int64>(gathered.size());
        if (!goesOn || gathered.size() + size > Room) {
            if (const int code = flush(file); code != SQLITE_OK)
                return code;
        }
        if (size > Room)
            return below(file, [&](const sqlite3_io_methods& methods) {
                return methods.xWrite(file, source, count, to);
            });
        if (gathered.empty())
            begin = to;
        const auto* const bytes = static_cast<const char*>(source);
        gathered.insert(gathered.end(), bytes, bytes + size);
        return SQLITE_OK;
    }

    /// Does something that has to see what was written.
    template <class Action> int afterFlush(sqlite3_file* file, Action&& action)
    {
        const int code = flush(file);
        return code == SQLITE_OK ? below(file, action) : code;
    }
};

GatheredWrites::GatheredWrites(sqlite3* connection)
{
    if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER, &m_file) != SQLITE_OK ||
        m_file == nullptr || m_file->pMethods == nullptr) {
        m_file = nullptr;
        return;
    }
    m_methods = std::make_unique<Methods>();
    static_cast<sqlite3_io_methods&>(*m_methods) = *m_file->pMethods;
    m_methods->system = m_file->pMethods;
    m_methods->gathered.reserve(Room);
    m_methods->iVersion = 1; // no mapping into memory
    m_methods->xWrite = [](sqlite3_file* file, const void* source, int count, sqlite3_int64 to) {
        return Methods::of(file).write(file, source, count, to);
    };
    m_methods->xRead = [](sqlite3_file* file, void* target, int count, sqlite3_int64 from) {
        return Methods::of(file).afterFlush(file, [&](const sqlite3_io_methods& methods) {
            return methods.xRead(file, target, count, from);
        });
    };
    m_methods->xTruncate = [](sqlite3_file* file, sqlite3_int64 size) {
        return Methods::of(file).afterFlush(
            file, [&](const sqlite3_io_methods& methods) { return methods.xTruncate(file, size); });
    };
    m_methods->xSync = [](sqlite3_file* file, int flags) {
        return Methods::of(file).afterFlush(
            file, [&](const sqlite3_io_methods& methods) { return methods.xSync(file, flags); });
    };
    m_methods->xFileSize = [](sqlite3_file* file, sqlite3_int64* size) {
        return Methods::of(file).afterFlush(
            file, [&](const sqlite3_io_methods& methods) { return methods.xFileSize(file, size); });
    };
    m_methods->xLock = [](sqlite3_file* file, int level) {
        return Methods::of(file).below(
            file, [&](const sqlite3_io_methods& methods) { return methods.xLock(file, level); });
    };
    m_methods->xUnlock = [](sqlite3_file* file, int level) {
        return Methods::of(file).afterFlush(
            file, [&](const sqlite3_io_methods& methods) { return methods.xUnlock(file, level); });
    };
    m_methods->xCheckReservedLock = [](sqlite3_file* file, int* isReserved) {
        return Methods::of(file).below(file, [&](const sqlite3_io_methods& methods) {
            return methods.xCheckReservedLock(file, isReserved);
        });
    };
    m_methods->xFileControl = [](sqlite3_file* file, int what, void* argument) {
        return Methods::of(file).below(file, [&](const sqlite3_io_methods& methods) {
            return methods.xFileControl(file, what, argument);
        });
    };
    m_methods->xSectorSize = [](sqlite3_file* file) {
        return Methods::of(file).below(
            file, [&](const sqlite3_io_methods& methods) { return methods.xSectorSize(file); });
    };
    m_methods->xDeviceCharacteristics = [](sqlite3_file* file) {
        return Methods::of(file).below(
            file, [&](const sqlite3_io_methods& methods) { return methods.xDeviceCharacteristics(file); });
    };
    m_file->pMethods = m_methods.get();
}

GatheredWrites::~GatheredWrites()
{
    if (m_file != nullptr)
        m_file->pMethods = m_methods->system;
}

int GatheredWrites::finish()
{
    if (m_file == nullptr)
        return SQLITE_OK;
    const int code = m_methods->flush(m_file);
    m_file->pMethods = m_methods->system;
    m_file = nullptr;
    return code;
}

} // namespace quillon::sqlite
