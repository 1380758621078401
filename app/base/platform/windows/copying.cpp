#include "app/base/platform/copying.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/platform/system_error.h"
#include "app/base/platform/windows/handle.h"

#include <QDir>
#include <QRandomGenerator>

#include <exception>
#include <memory>
#include <utility>

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
        HANDLE made = INVALID_HANDLE_VALUE;
        do {
            m_path = folder + u'\\' + QString::fromWCharArray(HalfCopy) + randomWord();
            made = CreateFileW(wide(nativePath(m_path)), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        } while (made == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
        if (made == INVALID_HANDLE_VALUE)
            throwLastError(errors::PathNotFound);
        CloseHandle(made);
    }
    ~FileBeside()
    {
        m_held.reset();
        if (!m_kept)
            DeleteFileW(wide(nativePath(m_path)));
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    const QString& path() const { return m_path; }
    /// Lets what was written into it outlive a power failure, and shows everybody that it is in use.
    void hold()
    {
        // What is read-only would make a copy that cannot be replaced.
        SetFileAttributesW(wide(nativePath(m_path)), FILE_ATTRIBUTE_NORMAL);
        m_held = openExisting(m_path, GENERIC_WRITE, 0);
        if (!m_held || FlushFileBuffers(m_held.get()) == 0)
            throwLastError(errors::PathNotFound);
    }
    /// Gives the file its name, in place of a file that has it.
    void keepAs(const QString& path)
    {
        if (!rename(m_path, path))
            throwLastError(errors::PathNotFound);
        m_kept = true;
        m_held.reset();
    }
    static bool rename(const QString& from, const QString& to)
    {
        return MoveFileExW(wide(nativePath(from)), wide(nativePath(to)),
                           MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    }

private:
    QString m_path;
    Handle m_held;
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

    FileBeside& beside() { return m_beside; }
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

/// Who is told, and what he threw: no exception can pass through the system's function.
struct Listener {
    const Files::Progress& progress;
    std::exception_ptr thrown;
    bool ended = false;
};

DWORD CALLBACK tellProgress(LARGE_INTEGER total, LARGE_INTEGER done, LARGE_INTEGER, LARGE_INTEGER, DWORD,
                            DWORD reason, HANDLE, HANDLE, void* data)
{
    if (reason == CALLBACK_STREAM_SWITCH)
        return PROGRESS_CONTINUE; // nothing is done yet
    auto& listener = *static_cast<Listener*>(data);
    try {
        listener.ended = !listener.progress(done.QuadPart, total.QuadPart);
    } catch (...) {
        listener.thrown = std::current_exception();
        return PROGRESS_CANCEL;
    }
    return listener.ended ? PROGRESS_CANCEL : PROGRESS_CONTINUE;
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
    const QString from = nativePath(source);
    if (GetFileAttributesW(wide(from)) == INVALID_FILE_ATTRIBUTES)
        throwLastError(errors::FileNotFound);
    if (!isOrdinaryFile(source))
        throw Error(errors::PathFileAccess);
    if (!fitsAsName(folder, name))
        throw Error(errors::PathFileAccess);
    auto copy = std::make_unique<CopyBeside>(QDir::toNativeSeparators(folder), name);
    Listener listener{.progress = progress, .thrown = nullptr, .ended = false};
    BOOL cancelled = FALSE;
    if (CopyFileExW(wide(from), wide(nativePath(copy->beside().path())), progress ? tellProgress : nullptr,
                    &listener, &cancelled, 0) == 0) {
        if (listener.thrown)
            std::rethrow_exception(listener.thrown);
        if (listener.ended)
            return nullptr;
        throwLastError(errors::FileNotFound);
    }
    copy->beside().hold();
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
