#include "app/base/platform/files.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillon::platform
{

bool isOrdinaryFile(const QString& path)
{
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 && S_ISREG(status.st_mode);
}

bool isBareName(const QString& name)
{
    return !name.isEmpty() && name != u"." && name != u".." && !name.contains(u'/') &&
           !name.contains(QChar::Null);
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

} // namespace quillon::platform
