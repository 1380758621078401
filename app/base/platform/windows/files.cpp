#include "app/base/platform/files.h"

#include "app/base/platform/windows/wide_text.h"

#include <QDir>

#include <windows.h>

namespace quillon::platform
{

namespace
{

bool mayOpen(const QString& path, DWORD access, DWORD flags)
{
    const HANDLE handle = CreateFileW(wide(QDir::toNativeSeparators(path)), access,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(handle);
    return true;
}

} // namespace

bool isOrdinaryFile(const QString& path)
{
    // A file with the attribute hidden or system counts as missing.
    const DWORD attributes = GetFileAttributesW(wide(QDir::toNativeSeparators(path)));
    constexpr DWORD extraordinary =
        FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & extraordinary) == 0;
}

bool mayWriteIn(const QString& folder)
{
    return mayOpen(folder, FILE_ADD_FILE, FILE_FLAG_BACKUP_SEMANTICS);
}

bool mayRead(const QString& path)
{
    return mayOpen(path, GENERIC_READ, 0);
}

bool mayReadAndWrite(const QString& path)
{
    return mayOpen(path, GENERIC_READ | GENERIC_WRITE, 0);
}

} // namespace quillon::platform
