#include "app/base/platform/files.h"

#include "app/base/platform/any_names.h"
#include "app/base/platform/linux/descriptor.h"
#include "app/base/platform/system_error.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace quillon::platform
{

bool isOrdinaryFile(const QString& path)
{
    struct stat status = {};
    return stat(bytesForSystem(path).constData(), &status) == 0 && S_ISREG(status.st_mode);
}

bool isEntry(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool leadsOut(const QString& folder, const QString& name)
{
    const QString inside = QFileInfo(folder).canonicalFilePath();
    const QString real = QFileInfo(folder + u'/' + name).canonicalFilePath();
    return inside.isEmpty() || !real.startsWith(inside.endsWith(u'/') ? inside : inside + u'/');
}

QStringList namesOfFiles(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::NoSort);
}

SizeAndTime sizeAndTime(const QString& path)
{
    const QFileInfo info(path);
    return {.size = info.size(), .modified = info.lastModified().toMSecsSinceEpoch()};
}

bool isAtHand(const QString& /*path*/)
{
    // What fetches files tells nobody of it here.
    return true;
}

bool isBareName(const QString& name)
{
    return !name.isEmpty() && name != u"." && name != u".." && !name.contains(u'/') &&
           !name.contains(QChar::Null);
}

QString nameKey(const QString& name)
{
    return name;
}

bool mayWriteIn(const QString& folder)
{
    return faccessat(AT_FDCWD, QFile::encodeName(folder).constData(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool fitsAsName(const QString& folder, const QString& name)
{
    const long most = pathconf(QFile::encodeName(folder).constData(), _PC_NAME_MAX);
    return most < 0 || QFile::encodeName(name).size() <= most;
}

bool mayRead(const QString& path)
{
    return faccessat(AT_FDCWD, QFile::encodeName(path).constData(), R_OK, AT_EACCESS) == 0;
}

bool mayReadAndWrite(const QString& path)
{
    return faccessat(AT_FDCWD, QFile::encodeName(path).constData(), R_OK | W_OK, AT_EACCESS) == 0;
}

bool makeNewFile(const QString& path)
{
    constexpr mode_t ForAll = 0666; // less what the user's mask takes away
    const Descriptor file(
        open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ForAll));
    if (file < 0) {
        if (lastSystemError() == EEXIST)
            return false;
        throw Error(errorOfSystem(lastSystemError(), errors::PathNotFound));
    }
    syncFolder(QFileInfo(path).path());
    return true;
}

void syncFile(const QString& path)
{
    const Descriptor file(open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC));
    if (file < 0 || (fsync(file) != 0 && errno != EINVAL && errno != ENOTSUP))
        throw Error(errorOfSystem(lastSystemError(), errors::FileNotFound));
}

void syncFolder(const QString& folder)
{
    const Descriptor entries(open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Not every folder can be read, and not every file system syncs one.
    const bool cannot = entries < 0 && (errno == EACCES || errno == EPERM);
    if (cannot || (entries >= 0 && (fsync(entries) == 0 || errno == EINVAL || errno == ENOTSUP)))
        return;
    throw Error(errorOfSystem(lastSystemError(), errors::PathNotFound));
}

Error whyNotFound(const QString& path, qint32 whenMissing)
{
    struct stat status = {};
    if (stat(bytesForSystem(path).constData(), &status) == 0)
        return Error(whenMissing); // it has come meanwhile
    return errorOfSystem(lastSystemError(), whenMissing);
}

bool isInTheWay(const QString& path)
{
    // One question: what is asked about may come and go.
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 && !S_ISREG(status.st_mode);
}

} // namespace quillon::platform
