#include "app/base/platform/files.h"

#include "app/base/platform/windows/handle.h"

#include <QDir>

#include <algorithm>

namespace quillon::platform
{

namespace
{

bool mayOpen(const QString& path, DWORD access, DWORD flags)
{
    return openExisting(QDir::toNativeSeparators(path), access, flags) != nullptr ||
           GetLastError() == ERROR_SHARING_VIOLATION;
}

} // namespace

bool isOrdinaryFile(const QString& path)
{
    const QString native = QDir::toNativeSeparators(path);
    // A file with the attribute hidden or system counts as missing.
    const DWORD attributes = GetFileAttributesW(wide(native));
    constexpr DWORD extraordinary =
        FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & extraordinary) != 0)
        return false;
    // The names of devices have attributes like files, and those of a link do not tell whether it leads anywhere.
    const Handle file = openExisting(native, 0, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION found = {};
    return file && GetFileType(file.get()) == FILE_TYPE_DISK &&
           GetFileInformationByHandle(file.get(), &found) != 0 &&
           (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool isBareName(const QString& name)
{
    // A colon leads to a drive or to another stream of the file.
    const auto leadsAway = [](QChar character) {
        return character == u'/' || character == u'\\' || character == u':' || character.isNull();
    };
    return !name.isEmpty() && name != u"." && name != u".." &&
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

} // namespace quillon::platform
