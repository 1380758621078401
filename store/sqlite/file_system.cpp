#include "store/sqlite/file_system.h"

#include "app/base/platform/short_path.h"
#include "store/sqlite/inspected_file.h"
#include "store/sqlite/troubles.h"

#include <sqlite3.h>

#include <cstring>

namespace quillon::sqlite
{

namespace
{

constexpr const char* NameToUse = "quillon";
constexpr const char* NameToInspect = "quillon-inspect";

sqlite3_vfs* systemFiles()
{
    // On Windows the usual one takes no path of more than some 250 characters.
    sqlite3_vfs* const forLongPaths = sqlite3_vfs_find("win32-longpath");
    return forLongPaths != nullptr ? forLongPaths : sqlite3_vfs_find(nullptr);
}

int openToUse(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags)
{
    file->pMethods = nullptr;
    // Such a file lists journals of other databases; one may be named like any file.
    if ((flags & SQLITE_OPEN_SUPER_JOURNAL) != 0)
        return SQLITE_CANTOPEN;
    return openTelling(systemFiles(), name, file, flags, outFlags);
}

int openToInspect(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags)
{
    return openInspected(systemFiles(), name, file, flags, outFlags);
}

int removeToUse(sqlite3_vfs*, const char* name, int syncFolder)
{
    return removeTelling(systemFiles(), name, syncFolder);
}

int deleteNothing(sqlite3_vfs*, const char*, int)
{
    return SQLITE_OK;
}

int fullPathname(sqlite3_vfs*, const char* name, int room, char* fullName)
{
    if (!platform::ShortPath::isOne(name))
        return systemFiles()->xFullPathname(systemFiles(), name, room, fullName);
    // SQLite would follow it back to the long name that it stands for.
    const std::size_t size = std::strlen(name) + 1;
    if (size > static_cast<std::size_t>(room))
        return SQLITE_CANTOPEN;
    std::memcpy(fullName, name, size);
    return SQLITE_OK;
}

/// A way of our own differs from that of the system in what is set afterwards.
sqlite3_vfs likeTheSystem(const char* name)
{
    sqlite3_vfs own = *systemFiles();
    own.pNext = nullptr;
    own.zName = name;
    own.xFullPathname = fullPathname;
    return own;
}

/// Makes both ways known to SQLite, once in a run.
void registerBoth()
{
    static sqlite3_vfs toUse = likeTheSystem(NameToUse);
    static sqlite3_vfs toInspect = likeTheSystem(NameToInspect);
    static const bool registered = [] {
        toUse.xOpen = openToUse;
        toUse.xDelete = removeToUse;
        toInspect.xOpen = openToInspect;
        toInspect.xDelete = deleteNothing;
        toInspect.szOsFile = sizeOfInspected();
        return sqlite3_vfs_register(&toUse, 0) == SQLITE_OK &&
               sqlite3_vfs_register(&toInspect, 0) == SQLITE_OK;
    }();
    static_cast<void>(registered); // without it no file opens
}

} // namespace

const char* fileSystem(Access access)
{
    registerBoth();
    return access == Access::ToUse ? NameToUse : NameToInspect;
}

} // namespace quillon::sqlite
