#include "app/base/platform/copying.h"

#include "app/base/error.h"
#include "app/base/platform/any_names.h"
#include "app/base/platform/files.h"
#include "app/base/platform/linux/descriptor.h"
#include "app/base/platform/system_error.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

namespace quillon::platform
{

namespace
{

// What bears one of these names is on its way. Whoever puts it there holds it (`flock`) as long as he is at work: what
// nobody holds has been left by an abrupt end.
constexpr const char* CopyOnItsWay = ".quillon-copy-";
constexpr const char* FormerContent = ".quillon-former-"; // a folder, and in it the file under its own name

/// How many names are tried. Every one of them being taken means that something else is wrong.
constexpr int MostNames = 100;

/// Throws the failure that the system's last error stands for.
[[noreturn]] void throwLastError(qint32 whenMissing)
{
    throw Error(errorOfSystem(lastSystemError(), whenMissing));
}

/// A name that hardly anything has.
QByteArray anyName(const QByteArray& folder, const QByteArray& beginning)
{
    constexpr quint64 Names = 2'176'782'336; // of six characters
    const quint64 number = QRandomGenerator::system()->generate64() % Names;
    return folder + '/' + beginning + QByteArray::number(number, 36).rightJustified(6, '0');
}

/// Whether this program holds what is open now, and it still has a name. `otherwise` when the file system knows no such
/// thing.
bool holds(int file, bool otherwise)
{
    struct stat status = {};
    if (flock(file, LOCK_EX | LOCK_NB) != 0)
        return errno != EWOULDBLOCK && errno != EINTR && otherwise;
    return fstat(file, &status) == 0 && status.st_nlink > 0;
}

/// A file that is gone again unless it is kept. Where the file system can, it has no name until then, so that not even
/// the end of the program leaves it behind.
class FileBeside
{
public:
    explicit FileBeside(QByteArray folder) : m_folder(std::move(folder)), m_file(make())
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
            if (link(m_file, name))
                return;
            if (errno != EEXIST)
                throwLastError(errors::PathNotFound);
            nameBeside();
        }
        if (rename(m_name.constData(), name.constData()) != 0)
            throwLastError(errors::PathNotFound);
        m_name.clear();
    }

private:
    QByteArray anyName() const { return platform::anyName(m_folder, CopyOnItsWay); }
    int make()
    {
        if (canNameLater()) {
            const int nameless = makeNameless();
            if (nameless >= 0) {
                flock(nameless, LOCK_EX | LOCK_NB); // before it has a name
                return nameless;
            }
        }
        for (int i = 0; i < MostNames; ++i) {
            const QByteArray name = anyName();
            const int named =
                open(name.constData(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
            if (named < 0 && errno != EEXIST)
                return named;
            // Between its making and its holding, another program may have taken it for a left one.
            if (named >= 0 && holds(named, true)) {
                m_name = name;
                return named;
            }
            if (named >= 0)
                close(named);
        }
        errno = EEXIST;
        return -1;
    }
    int makeNameless() const
    {
        return open(m_folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }
    /// Tries it with an empty file: some systems make nameless files and refuse to name them, which would be known
    /// only after everything has been copied.
    bool canNameLater() const
    {
        const Descriptor trial(makeNameless());
        const QByteArray name = anyName();
        if (trial < 0 || !link(trial, name))
            return false;
        unlink(name.constData());
        return true;
    }
    /// Only the process's own list of files leads from a file without a name to one with a name.
    static bool link(int file, const QByteArray& name)
    {
        const QByteArray self = "/proc/self/fd/" + QByteArray::number(file);
        return linkat(AT_FDCWD, self.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0;
    }
    /// Names the nameless file for the moment before it replaces another.
    void nameBeside()
    {
        for (int i = 0; i < MostNames; ++i) {
            const QByteArray name = anyName();
            if (link(m_file, name)) {
                m_name = name;
                return;
            }
            if (errno != EEXIST)
                break;
        }
        throwLastError(errors::PathNotFound);
    }

    QByteArray m_folder;
    QByteArray m_name; // as long as it is a name for the time being
    Descriptor m_file;
};

/// What bore a name until it was given to a copy: in a folder of its own, which tells for whom it was replaced.
class Former
{
public:
    /// Nothing is there yet.
    Former(const QByteArray& folder, const QByteArray& name, const QByteArray& mark)
        : m_path(folder + '/' + name), m_name(name), m_held(make(folder, mark))
    {
        if (m_held < 0)
            throwLastError(errors::PathNotFound);
    }
    /// One that an abrupt end has left; to be used only when it `isHeld`.
    Former(const QByteArray& folder, const QByteArray& name, const QString& left)
        : m_path(folder + '/' + name), m_name(name), m_aside(folder + '/' + QFile::encodeName(left)),
          m_held(open(m_aside.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC))
    {
    }
    ~Former() = default;
    Former(const Former&) = delete;
    Former& operator=(const Former&) = delete;

    bool isHeld() const { return m_held >= 0 && holds(m_held, false); }
    void take() const
    {
        // As a second name, so that there is a file of that name at every moment; not every file system has these.
        if (linkat(AT_FDCWD, m_path.constData(), AT_FDCWD, aside().constData(), 0) != 0 &&
            rename(m_path.constData(), aside().constData()) != 0)
            throwLastError(errors::PathNotFound);
        // An abrupt end from here on finds it.
        if (fsync(m_held) != 0 && errno != EINVAL && errno != ENOTSUP)
            throwLastError(errors::PathNotFound);
    }
    void putBack() const
    {
        // Two names of the same file both stay in a renaming.
        if (rename(aside().constData(), m_path.constData()) == 0)
            letGo();
        else
            rmdir(m_aside.constData()); // goes only when there is nothing in it
    }
    void letGo() const
    {
        unlink(aside().constData());
        rmdir(m_aside.constData());
    }

private:
    QByteArray aside() const { return m_aside + '/' + m_name; }
    int make(const QByteArray& folder, const QByteArray& mark)
    {
        for (int i = 0; i < MostNames; ++i) {
            m_aside = anyName(folder, FormerContent + mark + '-');
            if (mkdir(m_aside.constData(), S_IRWXU) != 0) {
                if (errno == EEXIST)
                    continue;
                return -1;
            }
            const int held = open(m_aside.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            if (held >= 0 && holds(held, true))
                return held;
            if (held >= 0)
                close(held);
        }
        errno = EEXIST;
        return -1;
    }

    QByteArray m_path;
    QByteArray m_name;
    QByteArray m_aside;
    Descriptor m_held;
};

QStringList leftIn(const QString& folder, const char* beginning)
{
    return QDir(folder).entryList({QString::fromLatin1(beginning) + u'*'},
                                  QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// What is told by the name of the folder of a former content.
QString markOf(const QString& aside)
{
    const QString mark = aside.sliced(static_cast<qsizetype>(qstrlen(FormerContent)));
    return mark.first(qMax(qsizetype(0), mark.lastIndexOf(u'-')));
}

/// The name of the file in it; empty when there is none.
QString nameIn(const QString& aside)
{
    const QStringList names =
        QDir(aside).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    return names.isEmpty() ? QString() : names.constFirst();
}

/// A copy that lies beside its place.
class CopyBeside : public StagedCopy
{
public:
    CopyBeside(const QByteArray& folder, QByteArray name)
        : m_folder(folder), m_name(std::move(name)), m_beside(folder)
    {
    }
    ~CopyBeside() override { putBack(); }
    CopyBeside(const CopyBeside&) = delete;
    CopyBeside& operator=(const CopyBeside&) = delete;

    int file() const { return m_beside.file(); }
    void place(const QString& mark) override
    {
        const QByteArray path = m_folder + '/' + m_name;
        struct stat status = {};
        const bool replaces = lstat(path.constData(), &status) == 0;
        if (!replaces && errno != ENOENT)
            throwLastError(errors::PathNotFound);
        if (replaces && S_ISDIR(status.st_mode))
            throw Error(errors::PathFileAccess);
        if (replaces)
            m_former = std::make_unique<Former>(m_folder, m_name, mark.toUtf8());
        try {
            if (replaces) {
                m_former->take();
                syncFolder(QFile::decodeName(m_folder));
            }
            m_beside.keepAs(path);
            syncFolder(QFile::decodeName(m_folder));
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
        const QString folder = QFile::decodeName(m_folder);
        for (const QString& left : leftIn(folder, FormerContent)) {
            if (nameIn(folder + u'/' + left) != QFile::decodeName(m_name))
                continue;
            const Former former(m_folder, m_name, left);
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
        try {
            syncFolder(QFile::decodeName(m_folder));
        } catch (const Error&) {
            return; // there is a failure already that is being told
        }
    }

    QByteArray m_folder;
    QByteArray m_name;
    FileBeside m_beside;
    std::unique_ptr<Former> m_former; // what bore the name
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
            if (part > 0)
                written += part;
            else if (part == 0)
                throw Error(errors::DiskFull);
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
    const Descriptor from(open(bytesForSystem(source).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
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

void settleReplacements(const QString& folder, const Files::Judge& judge)
{
    const QByteArray in = QFile::encodeName(folder);
    for (const QString& left : leftIn(folder, CopyOnItsWay)) {
        const QByteArray path = in + '/' + QFile::encodeName(left);
        const Descriptor file(open(path.constData(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
        struct stat status = {};
        if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) && holds(file, false))
            unlink(path.constData());
    }
    for (const QString& left : leftIn(folder, FormerContent)) {
        const Former lock(in, {}, left);
        if (!lock.isHeld())
            continue;
        const QString name = nameIn(folder + u'/' + left);
        const Former former(in, QFile::encodeName(name), left); // its file is that of `lock`, which holds it
        const Files::Replacement outcome =
            name.isEmpty() ? Files::Replacement::Done : judge(markOf(left), name);
        if (outcome == Files::Replacement::Done)
            former.letGo();
        else if (outcome == Files::Replacement::BrokenOff)
            former.putBack();
    }
}

} // namespace quillon::platform
