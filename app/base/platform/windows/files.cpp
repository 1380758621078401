#include "app/base/platform/files.h"

#include "app/base/platform/windows/handle.h"

#include "app/base/platform/system_error.h"

#include <QFile>

#include <algorithm>
#include <vector>

namespace quillon::platform
{

namespace
{

bool mayOpen(const QString& path, DWORD access, DWORD flags)
{
    return openExisting(path, access, flags) != nullptr || GetLastError() == ERROR_SHARING_VIOLATION;
}

/// What the system says of the entries that a pattern meets. What Qt says of a shortcut is said of what it leads to.
class Entries
{
public:
    explicit Entries(const QString& pattern) : m_search(FindFirstFileW(wide(nativePath(pattern)), &m_entry))
    {
    }
    ~Entries()
    {
        if (isAny())
            FindClose(m_search);
    }
    Entries(const Entries&) = delete;
    Entries& operator=(const Entries&) = delete;

    bool isAny() const { return m_search != INVALID_HANDLE_VALUE; }
    const WIN32_FIND_DATAW& entry() const { return m_entry; }
    bool goOn() { return FindNextFileW(m_search, &m_entry) != 0; }

private:
    WIN32_FIND_DATAW m_entry = {};
    HANDLE m_search;
};

/// Whether the entry at `path` leads elsewhere. Others of the system's marked files, such as those of a cloud, do not.
bool isLink(const QString& path)
{
    const Entries found(path);
    if (!found.isAny() || (found.entry().dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return false;
    const DWORD tag = found.entry().dwReserved0;
    return tag == IO_REPARSE_TAG_SYMLINK || tag == IO_REPARSE_TAG_MOUNT_POINT;
}

/// The name without any link in it; empty when nothing stands there.
QString realPath(const QString& path)
{
    const Handle entry = openExisting(path, 0, FILE_FLAG_BACKUP_SEMANTICS);
    if (!entry)
        return {};
    // Not every disk has a letter.
    constexpr DWORD Form = FILE_NAME_NORMALIZED | VOLUME_NAME_NT;
    std::vector<wchar_t> name(GetFinalPathNameByHandleW(entry.get(), nullptr, 0, Form) + 1);
    const DWORD size =
        GetFinalPathNameByHandleW(entry.get(), name.data(), static_cast<DWORD>(name.size()), Form);
    return size < name.size() ? QString::fromWCharArray(name.data(), static_cast<qsizetype>(size))
                              : QString();
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

bool isEntry(const QString& path)
{
    return GetFileAttributesW(wide(nativePath(path))) != INVALID_FILE_ATTRIBUTES ||
           GetLastError() == ERROR_SHARING_VIOLATION;
}

bool leadsOut(const QString& folder, const QString& name)
{
    const QString path = folder + u'\\' + name;
    if (!isLink(path))
        return false;
    const QString inside = realPath(folder);
    return inside.isEmpty() || !realPath(path).startsWith(inside.endsWith(u'\\') ? inside : inside + u'\\');
}

QStringList namesOfFiles(const QString& folder)
{
    QStringList names;
    Entries entries(folder + QLatin1String("\\*"));
    for (bool isAny = entries.isAny(); isAny; isAny = entries.goOn()) {
        if ((entries.entry().dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            names << QString::fromWCharArray(entries.entry().cFileName);
    }
    return names;
}

SizeAndTime sizeAndTime(const QString& path)
{
    // Opened for nothing but its attributes, which disturbs nobody.
    const Handle file = openExisting(path, 0, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION found = {};
    if (!file || GetFileInformationByHandle(file.get(), &found) == 0)
        return {};
    const auto whole = [](DWORD high, DWORD low) { return (static_cast<qint64>(high) << 32) | low; };
    constexpr qint64 TicksPerMillisecond = 10'000;
    constexpr qint64 FirstOf1970 = 11'644'473'600'000; // milliseconds since 1601
    return {.size = whole(found.nFileSizeHigh, found.nFileSizeLow),
            .modified = whole(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime) /
                            TicksPerMillisecond -
                        FirstOf1970};
}

bool isAtHand(const QString& path)
{
    const DWORD attributes = GetFileAttributesW(wide(nativePath(path)));
    // By the system's own numbers, of which older headers know no names.
    constexpr DWORD RecallOnOpen = 0x40000;
    constexpr DWORD RecallOnDataAccess = 0x400000;
    constexpr DWORD Elsewhere = FILE_ATTRIBUTE_OFFLINE | RecallOnOpen | RecallOnDataAccess;
    return attributes == INVALID_FILE_ATTRIBUTES || (attributes & Elsewhere) == 0;
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

QString nameKey(const QString& name)
{
    if (name.isEmpty())
        return name;
    // In no language, and without the flag for linguistic rules, letters are those of the system's files: each stays one.
    QString key(name.size(), Qt::Uninitialized);
    const auto size = static_cast<int>(name.size());
    const int done = LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, wide(name), size,
                                   reinterpret_cast<wchar_t*>(key.data()), size, nullptr, nullptr, 0);
    return done == size ? key : name;
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
