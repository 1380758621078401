#include "app/base/platform/renaming.h"

#include "app/base/platform/windows/wide_text.h"

#include <windows.h>

namespace quillon::platform
{

namespace
{

/// What looks for viruses, keeps an index or a copy elsewhere opens files just after they were written; as long as it
/// does, neither they nor the folders above them can be renamed. That passes.
bool renamePatiently(const QString& from, const QString& to, DWORD flags)
{
    constexpr DWORD Longest = 512; // milliseconds, after some twice as short; a second in all
    for (DWORD pause = 1;; pause *= 2) {
        if (MoveFileExW(wide(nativePath(from)), wide(nativePath(to)), flags) != 0)
            return true;
        const DWORD failure = GetLastError();
        const bool passes = failure == ERROR_ACCESS_DENIED || failure == ERROR_SHARING_VIOLATION ||
                            failure == ERROR_LOCK_VIOLATION;
        if (!passes || pause > Longest)
            return false;
        Sleep(pause);
    }
}

} // namespace

bool renameFolder(const QString& from, const QString& to)
{
    if (GetFileAttributesW(wide(nativePath(to))) != INVALID_FILE_ATTRIBUTES) {
        SetLastError(ERROR_ALREADY_EXISTS);
        return false;
    }
    return renamePatiently(from, to, MOVEFILE_WRITE_THROUGH);
}

bool renameOver(const QString& from, const QString& to)
{
    return renamePatiently(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

} // namespace quillon::platform
