#include "app/base/platform/copying.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/platform/system_error.h"
#include "app/base/platform/windows/handle.h"

#include <QDir>
#include <QRandomGenerator>

#include <memory>
#include <utility>
#include <vector>

namespace quillon::platform
{

namespace
{

/// Throws the failure that the system's last error stands for.
[[noreturn]] void throwLastError(qint32 whenMissing)
{
    throw Error(errorOfSystem(lastSystemError(), whenMissing));
}

constexpr const wchar_t* HalfCopy = L".quillon-copy-";

QString randomWord()
{
    return QString::number(QRandomGenerator::system()->generate64(), 36);
}

/// A file that is gone again unless it is kept.
class FileBeside
{
public:
    explicit FileBeside(const QString& folder)
    {
        // As long as it is open nobody can open it for himself alone, and so sees that it is in use.
        constexpr DWORD Everybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        HANDLE made = INVALID_HANDLE_VALUE;
        do {
            m_path = folder + u'\\' + QString::fromWCharArray(HalfCopy) + randomWord();
            made = CreateFileW(wide(nativePath(m_path)), GENERIC_WRITE, Everybody, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        } while (made == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
        if (made == INVALID_HANDLE_VALUE)
            throwLastError(errors::PathNotFound);
        m_file.reset(made);
    }
    ~FileBeside()
    {
        m_file.reset();
        if (!m_kept)
            DeleteFileW(wide(nativePath(m_path)));
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    HANDLE file() const { return m_file.get(); }
    /// Gives the file its name, in place of a file that has it.
    void keepAs(const QString& path)
    {
        if (!rename(m_path, path))
            throwLastError(errors::PathNotFound);
        m_kept = true;
        m_file.reset();
    }
    static bool rename(const QString& from, const QString& to)
    {
        return MoveFileExW(wide(nativePath(from)), wide(nativePath(to)),
                           MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    }

private:
    QString m_path;
    Handle m_file;
    bool m_kept = false;
};

constexpr const wchar_t* HeldBy =
    L"\\.quillon-held"; // open, and gone with the program, as long as it is at work

QString formerContent()
{
    return QStringLiteral(".quillon-former-");
}

/// What bore a name until it was given to a copy: in a folder of its own, which tells for whom it was replaced.
class Former
{
public:
    /// `aside`: the folder, which is made unless it `isLeft` from an abrupt end.
    Former(const QString& folder, const QString& name, const QString& aside, bool isLeft)
        : m_path(folder + u'\\' + name), m_folder(folder + u'\\' + aside), m_aside(m_folder + u'\\' + name)
    {
        if (!isLeft && CreateDirectoryW(wide(nativePath(m_folder)), nullptr) == 0)
            throwLastError(errors::PathNotFound);
        const HANDLE held =
            CreateFileW(wide(nativePath(m_folder + QString::fromWCharArray(HeldBy))), GENERIC_WRITE, 0,
                        nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        m_held.reset(held == INVALID_HANDLE_VALUE ? nullptr : held);
    }

    bool isHeld() const { return m_held != nullptr; }
    void take() const
    {
        if (!FileBeside::rename(m_path, m_aside))
            throwLastError(errors::PathNotFound);
    }
    void putBack()
    {
        // Where that fails it stays under its other name and is not lost.
        FileBeside::rename(m_aside, m_path);
        removeFolder();
    }
    void letGo()
    {
        // The system does not remove what is read-only.
        SetFileAttributesW(wide(nativePath(m_aside)), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(wide(nativePath(m_aside)));
        removeFolder();
    }

private:
    void removeFolder()
    {
        m_held.reset();
        RemoveDirectoryW(wide(nativePath(m_folder))); // goes only when there is nothing in it
    }

    QString m_path;
    QString m_folder;
    QString m_aside;
    Handle m_held;
};

QStringList leftIn(const QString& folder)
{
    return QDir(folder).entryList({formerContent() + u'*'}, QDir::Dirs | QDir::Hidden);
}

/// The name of the file in the folder of a former content; empty when there is none.
QString nameIn(const QString& aside)
{
    const QString held = QString::fromWCharArray(HeldBy).sliced(1);
    for (const QString& name : QDir(aside).entryList(QDir::Files | QDir::Hidden | QDir::System)) {
        if (name != held)
            return name;
    }
    return {};
}

/// A copy that lies beside its place.
class CopyBeside : public StagedCopy
{
public:
    CopyBeside(const QString& folder, const QString& name)
        : m_folder(folder), m_name(name), m_path(folder + u'\\' + name), m_beside(folder)
    {
    }
    ~CopyBeside() override { putBack(); }
    CopyBeside(const CopyBeside&) = delete;
    CopyBeside& operator=(const CopyBeside&) = delete;

    HANDLE file() const { return m_beside.file(); }
    void place(const QString& mark) override
    {
        const DWORD present = GetFileAttributesW(wide(nativePath(m_path)));
        if (present != INVALID_FILE_ATTRIBUTES) {
            if ((present & FILE_ATTRIBUTE_DIRECTORY) != 0)
                throw Error(errors::PathFileAccess); // not a matter of permission, as the system would say
            auto former = std::make_unique<Former>(m_folder, m_name,
                                                   formerContent() + mark + u'-' + randomWord(), false);
            former->take();
            m_former = std::move(former);
        }
        try {
            m_beside.keepAs(m_path);
        } catch (const Error&) {
            putBack();
            throw;
        }
    }
    void keep() override
    {
        if (m_former)
            m_former->letGo();
        m_former.reset();
        // What was left here under this name, whatever was to become of it, has been replaced for good.
        for (const QString& left : leftIn(m_folder)) {
            if (nameIn(m_folder + u'\\' + left).compare(m_name, Qt::CaseInsensitive) != 0)
                continue;
            Former former(m_folder, m_name, left, true);
            if (former.isHeld())
                former.letGo();
        }
    }
    void leave() override { m_former.reset(); }

private:
    void putBack()
    {
        if (!m_former)
            return;
        m_former->putBack();
        m_former.reset();
    }

    QString m_folder;
    QString m_name;
    QString m_path;
    FileBeside m_beside;
    std::unique_ptr<Former> m_former; // what bore the name before
};

/// False when `progress` has ended it.
bool copyBytes(HANDLE from, HANDLE to, qint64 total, const Files::Progress& progress)
{
    std::vector<char> buffer(std::size_t{1} << 20);
    qint64 done = 0;
    for (;;) {
        DWORD count = 0;
        if (ReadFile(from, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) == 0)
            throwLastError(errors::FileNotFound);
        if (count == 0)
            return true;
        DWORD written = 0;
        if (WriteFile(to, buffer.data(), count, &written, nullptr) == 0)
            throwLastError(errors::PathNotFound);
        if (written < count)
            throw Error(errors::DiskFull);
        done += count;
        if (progress && !progress(done, total))
            return false;
    }
}

/// Removes what copying left when it came to an abrupt end.
void removeHalfCopies(const QString& folder)
{
    const QStringList left =
        QDir(folder).entryList({QString::fromWCharArray(HalfCopy) + u'*'}, QDir::Files | QDir::Hidden);
    for (const QString& name : left) {
        // Who is at work on it does not let it be opened for oneself alone.
        const HANDLE half = CreateFileW(wide(nativePath(folder + u'\\' + name)), GENERIC_READ | DELETE, 0,
                                        nullptr, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (half != INVALID_HANDLE_VALUE)
            CloseHandle(half);
    }
}

} // namespace

std::unique_ptr<StagedCopy> stageCopy(const QString& source, const QString& folder, const QString& name,
                                      const Files::Progress& progress)
{
    if (GetFileAttributesW(wide(nativePath(source))) == INVALID_FILE_ATTRIBUTES)
        throwLastError(errors::FileNotFound);
    if (!isOrdinaryFile(source) || !fitsAsName(folder, name))
        throw Error(errors::PathFileAccess);
    // The system's own copying would bring along what makes a copy that cannot be replaced, such as "read-only".
    const Handle from = openExisting(source, GENERIC_READ, 0);
    LARGE_INTEGER size = {};
    if (!from || GetFileSizeEx(from.get(), &size) == 0)
        throwLastError(errors::FileNotFound);
    auto copy = std::make_unique<CopyBeside>(QDir::toNativeSeparators(folder), name);
    if (!copyBytes(from.get(), copy->file(), size.QuadPart, progress))
        return nullptr;
    // It is as old as the file.
    FILETIME read = {};
    FILETIME written = {};
    if (GetFileTime(from.get(), nullptr, &read, &written) != 0)
        SetFileTime(copy->file(), nullptr, &read, &written);
    if (FlushFileBuffers(copy->file()) == 0)
        throwLastError(errors::PathNotFound);
    return copy;
}

void settleReplacements(const QString& folder, const Files::Judge& judge)
{
    const QString in = QDir::toNativeSeparators(folder);
    removeHalfCopies(in);
    for (const QString& left : leftIn(in)) {
        const QString name = nameIn(in + u'\\' + left);
        Former former(in, name, left, true);
        if (!former.isHeld())
            continue;
        const qsizetype begin = formerContent().size();
        const QString mark = left.sliced(begin, qMax(qsizetype(0), left.lastIndexOf(u'-') - begin));
        const Files::Replacement outcome = name.isEmpty() ? Files::Replacement::Done : judge(mark, name);
        if (outcome == Files::Replacement::Done)
            former.letGo();
        else if (outcome == Files::Replacement::BrokenOff)
            former.putBack();
    }
}

} // namespace quillon::platform
