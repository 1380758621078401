#include "app/base/platform/copying.h"

#include "app/base/error.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace quillon::platform
{

namespace
{

/// Throws the failure that the system's last error stands for.
[[noreturn]] void throwLastError(qint32 whenMissing)
{
    switch (errno) {
    case ENOENT:
    case ENOTDIR:
        throw Error(whenMissing);
    case EACCES:
    case EPERM:
    case EROFS:
        throw Error(errors::PermissionDenied);
    case ENOSPC:
    case EDQUOT:
        throw Error(errors::DiskFull);
    default:
        throw Error(errors::PathFileAccess);
    }
}

/// An open file of the system.
class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// A file that is gone again unless it is kept. Where the file system can, it has no name until then, so that not even
/// the end of the program leaves it behind.
class FileBeside
{
public:
    explicit FileBeside(const QByteArray& folder) : m_pattern(folder + "/.quillon-XXXXXX"), m_file(make())
    {
        if (m_file < 0)
            throwLastError(errors::PathNotFound);
    }
    ~FileBeside()
    {
        if (!m_name.isEmpty())
            unlink(m_name.constData());
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    int file() const { return m_file; }
    /// Gives the file its name, in place of a file that has it.
    void keepAs(const QByteArray& name)
    {
        if (m_name.isEmpty()) {
            if (giveName(name))
                return;
            nameBeside();
        }
        if (rename(m_name.constData(), name.constData()) != 0)
            throwLastError(errors::PathNotFound);
        m_name.clear();
    }

    /// Gives what bears a name another one for the time being, and that is the answer; empty when nothing bears it.
    QByteArray setAside(const QByteArray& name) const
    {
        struct stat status = {};
        if (lstat(name.constData(), &status) != 0) {
            if (errno == ENOENT)
                return {};
            throwLastError(errors::PathNotFound);
        }
        if (S_ISDIR(status.st_mode))
            throw Error(errors::PathFileAccess);
        QByteArray aside = freeName();
        if (aside.isEmpty())
            throwLastError(errors::PathNotFound);
        // As a second name, so that there is a file of that name at every moment; not every file system has these.
        if (linkat(AT_FDCWD, name.constData(), AT_FDCWD, aside.constData(), 0) != 0 &&
            rename(name.constData(), aside.constData()) != 0)
            throwLastError(errors::PathNotFound);
        return aside;
    }

private:
    int make()
    {
        if (canNameLater()) {
            const int nameless = makeNameless();
            if (nameless >= 0)
                return nameless;
        }
        m_name = m_pattern;
        const int named = mkostemp(m_name.data(), O_CLOEXEC);
        if (named < 0)
            m_name.clear();
        return named;
    }
    int makeNameless() const
    {
        const QByteArray folder = m_pattern.first(m_pattern.lastIndexOf('/') + 1);
        return open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }
    /// Tries it with an empty file: some systems make nameless files and refuse to name them, which would be known
    /// only after everything has been copied.
    bool canNameLater() const
    {
        const Descriptor trial(makeNameless());
        if (trial < 0)
            return false;
        const QByteArray name = freeName();
        const bool named = !name.isEmpty() && link(trial, name);
        if (named)
            unlink(name.constData());
        return named;
    }
    /// Only the process's own list of files leads from a file without a name to one with a name.
    static bool link(int file, const QByteArray& name)
    {
        const QByteArray self = "/proc/self/fd/" + QByteArray::number(file);
        return linkat(AT_FDCWD, self.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0;
    }
    /// A name in the folder that nothing has; empty after a failure.
    QByteArray freeName() const
    {
        QByteArray name = m_pattern;
        const Descriptor placeholder(mkostemp(name.data(), O_CLOEXEC));
        if (placeholder < 0)
            return {};
        unlink(name.constData());
        return name;
    }
    /// Names the nameless file; false when something has this name.
    bool giveName(const QByteArray& name) const
    {
        if (link(m_file, name))
            return true;
        if (errno != EEXIST)
            throwLastError(errors::PathNotFound);
        return false;
    }
    /// Names the nameless file for the moment before it replaces another.
    void nameBeside()
    {
        while (m_name.isEmpty()) {
            const QByteArray name = freeName();
            if (name.isEmpty())
                throwLastError(errors::PathNotFound);
            if (giveName(name))
                m_name = name;
        }
    }

    QByteArray m_pattern;
    QByteArray m_name; // as long as it is a name for the time being
    Descriptor m_file;
};

/// A copy that lies beside its place.
class CopyBeside : public StagedCopy
{
public:
    CopyBeside(const QByteArray& folder, const QByteArray& name)
        : m_folder(folder), m_path(folder + '/' + name), m_beside(folder)
    {
    }
    ~CopyBeside() override { putBack(); }
    CopyBeside(const CopyBeside&) = delete;
    CopyBeside& operator=(const CopyBeside&) = delete;

    int file() const { return m_beside.file(); }
    void place() override
    {
        m_former = m_beside.setAside(m_path);
        try {
            m_beside.keepAs(m_path);
        } catch (const Error&) {
            putBack();
            throw;
        }
        syncNames();
    }
    void keep() override
    {
        if (!m_former.isEmpty())
            unlink(m_former.constData());
        m_former.clear();
    }

private:
    void putBack()
    {
        if (m_former.isEmpty())
            return;
        // Two names of the same file both stay in a renaming.
        if (rename(m_former.constData(), m_path.constData()) == 0)
            unlink(m_former.constData());
        m_former.clear();
        syncNames();
    }
    /// Lets the names, too, outlive a power failure.
    void syncNames() const
    {
        const Descriptor entries(open(m_folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (entries >= 0)
            fsync(entries);
    }

    QByteArray m_folder;
    QByteArray m_path;
    FileBeside m_beside;
    QByteArray m_former; // the name for the time being of what bore this one's
};

/// False when `progress` has ended it.
bool copyBytes(int from, int to, qint64 total, const Files::Progress& progress)
{
    std::vector<char> buffer(std::size_t{1} << 20);
    qint64 done = 0;
    for (;;) {
        const ssize_t count = read(from, buffer.data(), buffer.size());
        if (count == 0)
            return true;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            throwLastError(errors::FileNotFound);
        }
        for (ssize_t written = 0; written < count;) {
            const ssize_t part =
                write(to, buffer.data() + written, static_cast<std::size_t>(count - written));
            if (part >= 0)
                written += part;
            else if (errno != EINTR)
                throwLastError(errors::PathNotFound);
        }
        done += count;
        if (progress && !progress(done, total))
            return false;
    }
}

} // namespace

std::unique_ptr<StagedCopy> stageCopy(const QString& source, const QString& folder, const QString& name,
                                      const Files::Progress& progress)
{
    // A pipe must not be waited for, not even in opening it.
    const Descriptor from(open(QFile::encodeName(source).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (from < 0)
        throwLastError(errors::FileNotFound);
    struct stat status = {};
    if (fstat(from, &status) != 0 || !S_ISREG(status.st_mode))
        throw Error(errors::PathFileAccess);
    auto copy = std::make_unique<CopyBeside>(QFile::encodeName(folder), QFile::encodeName(name));
    const int file = copy->file();
    if (!copyBytes(from, file, status.st_size, progress))
        return nullptr;
    // The copy can be read by whoever could read the file, and be written by its owner. Where the file system knows no
    // such permissions, as on many a memory stick, it has its own.
    static_cast<void>(fchmod(file, (status.st_mode & 0777) | S_IRUSR | S_IWUSR));
    // It is as old as the file, too.
    const std::array dates = {status.st_atim, status.st_mtim};
    static_cast<void>(futimens(file, dates.data()));
    if (fsync(file) != 0)
        throwLastError(errors::PathNotFound);
    return copy;
}

} // namespace quillon::platform
