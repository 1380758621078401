#include "app/base/platform/copying.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/platform/system_error.h"
#include "app/base/platform/windows/handle.h"

#include <QDir>

#include <array>
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

/// A file that is gone again unless it is kept.
class FileBeside
{
public:
    explicit FileBeside(const QString& folder)
    {
        if (GetTempFileNameW(wide(folder), L"qln", 0, m_name.data()) == 0)
            throwLastError(errors::PathNotFound);
    }
    ~FileBeside()
    {
        if (!m_kept)
            DeleteFileW(name());
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    const wchar_t* name() const { return m_name.data(); }
    /// Gives the file its name, in place of a file that has it.
    void keepAs(const QString& path)
    {
        if (!rename(name(), wide(path)))
            throwLastError(errors::PathNotFound);
        m_kept = true;
    }
    static bool rename(const wchar_t* from, const wchar_t* to)
    {
        return MoveFileExW(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    }

private:
    std::array<wchar_t, MAX_PATH> m_name = {};
    bool m_kept = false;
};

/// A copy that lies beside its place.
class CopyBeside : public StagedCopy
{
public:
    CopyBeside(const QString& folder, const QString& name)
        : m_folder(folder), m_path(folder + u'\\' + name), m_beside(folder)
    {
    }
    ~CopyBeside() override { putBack(); }
    CopyBeside(const CopyBeside&) = delete;
    CopyBeside& operator=(const CopyBeside&) = delete;

    const wchar_t* name() const { return m_beside.name(); }
    void place() override
    {
        const DWORD present = GetFileAttributesW(wide(m_path));
        if (present != INVALID_FILE_ATTRIBUTES) {
            if ((present & FILE_ATTRIBUTE_DIRECTORY) != 0)
                throw Error(errors::PathFileAccess); // not a matter of permission, as the system would say
            auto former = std::make_unique<FileBeside>(m_folder);
            if (!FileBeside::rename(wide(m_path), former->name()))
                throwLastError(errors::PathNotFound);
            m_former = std::move(former);
        }
        try {
            m_beside.keepAs(m_path);
        } catch (const Error&) {
            putBack();
            throw;
        }
    }
    void keep() override { m_former.reset(); }

private:
    void putBack()
    {
        if (!m_former)
            return;
        try {
            m_former->keepAs(m_path);
        } catch (const Error&) {
            static_cast<void>(m_former.release()); // under its other name it is not lost
        }
        m_former.reset();
    }

    QString m_folder;
    QString m_path;
    FileBeside m_beside;
    std::unique_ptr<FileBeside> m_former; // what bore the name before
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

bool writeToDisk(const wchar_t* name)
{
    const Handle file = openExisting(QString::fromWCharArray(name), GENERIC_WRITE, 0);
    return file && FlushFileBuffers(file.get()) != 0;
}

} // namespace

std::unique_ptr<StagedCopy> stageCopy(const QString& source, const QString& folder, const QString& name,
                                      const Files::Progress& progress)
{
    const QString from = QDir::toNativeSeparators(source);
    if (GetFileAttributesW(wide(from)) == INVALID_FILE_ATTRIBUTES)
        throwLastError(errors::FileNotFound);
    if (!isOrdinaryFile(source))
        throw Error(errors::PathFileAccess);
    auto copy = std::make_unique<CopyBeside>(QDir::toNativeSeparators(folder), name);
    Listener listener{.progress = progress, .thrown = nullptr, .ended = false};
    BOOL cancelled = FALSE;
    if (CopyFileExW(wide(from), copy->name(), progress ? tellProgress : nullptr, &listener, &cancelled, 0) ==
        0) {
        if (listener.thrown)
            std::rethrow_exception(listener.thrown);
        if (listener.ended)
            return nullptr;
        throwLastError(errors::FileNotFound);
    }
    // What is read-only would make a copy that cannot be replaced.
    SetFileAttributesW(copy->name(), FILE_ATTRIBUTE_NORMAL);
    if (!writeToDisk(copy->name()))
        throwLastError(errors::PathNotFound);
    return copy;
}

} // namespace quillon::platform
