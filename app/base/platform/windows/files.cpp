#include "app/base/platform/files.h"

#include "app/base/platform/windows/handle.h"

#include "app/base/platform/system_error.h"

#include <QFile>

#include <algorithm>

namespace quillon::platform
{

namespace
{

bool mayOpen(const QString& path, DWORD access, DWORD flags)
{
    return openExisting(path, access, flags) != nullptr || GetLastError() == ERROR_SHARING_VIOLATION;
}

} // namespace

bool isOrdinaryFile(const QString& path)
{
    const QString native = nativePath(path);
    // A file with the attribute hidden or system counts as missing.
    const DWORD attributes = GetFileAttributesW(wide(native));
    constexpr DWORD extraordinary =
        FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & extraordinary) != 0)
        return false;
    // The names of devices have attributes like files, and those of a link do not tell whether it leads anywhere.
    const Handle file = openExisting(path, 0, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION found = {};
    return file && GetFileType(file.get()) == FILE_TYPE_DISK &&
           GetFileInformationByHandle(file.get(), &found) != 0 &&
           (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool isBareName(const QString& name)
{
    // A colon leads to a drive or to another stream of the file; a pattern has no file; and a blank or a dot at the end
    // is passed over, so that the name would be that of another file.
    constexpr QStringView Forbidden = u"/\\:*?\"<>|";
    const auto leadsAway = [&](QChar character) { return character < u' ' || Forbidden.contains(character); };
    return !name.isEmpty() && !name.endsWith(u'.') && !name.endsWith(u' ') &&
           std::none_of(name.begin(), name.end(), leadsAway);
}

bool mayWriteIn(const QString& folder)
{
    return mayOpen(folder, FILE_ADD_FILE, FILE_FLAG_BACKUP_SEMANTICS);
}

bool fitsAsName(const QString& /*folder*/, const QString& name)
{
    constexpr qsizetype Most = 255;
    return name.size() <= Most;
}

bool mayRead(const QString& path)
{
    return mayOpen(path, GENERIC_READ, 0);
}

bool mayReadAndWrite(const QString& path)
{
    return mayOpen(path, GENERIC_READ | GENERIC_WRITE, 0);
}

bool makeNewFile(const QString& path)
{
    const HANDLE made = CreateFileW(wide(nativePath(path)), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (made != INVALID_HANDLE_VALUE)
        return CloseHandle(made) != 0;
    const int failure = lastSystemError();
    if (failure == ERROR_FILE_EXISTS || failure == ERROR_ALREADY_EXISTS)
        return false;
    throw Error(errorOfSystem(failure, errors::PathNotFound));
}

void syncFile(const QString& path)
{
    const Handle file = openExisting(path, GENERIC_WRITE, 0);
    if (!file || FlushFileBuffers(file.get()) == 0)
        throw Error(errorOfSystem(lastSystemError(), errors::FileNotFound));
}

void syncFolder(const QString& /*folder*/)
{
    // The system's journal holds the names.
}

Error whyNotFound(const QString& path, qint32 whenMissing)
{
    if (GetFileAttributesW(wide(nativePath(path))) != INVALID_FILE_ATTRIBUTES)
        return Error(whenMissing); // it has come meanwhile
    return errorOfSystem(lastSystemError(), whenMissing);
}

bool isInTheWay(const QString& path)
{
    return !isOrdinaryFile(path) && QFile::exists(path);
}

} // namespace quillon::platform
