#include "app/base/platform/file_identity.h"

#include "app/base/platform/any_names.h"

#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>

namespace quillon::platform
{

std::optional<QByteArray> fileIdentity(const QString& path)
{
    struct statx status = {};
    constexpr unsigned Wanted = STATX_INO | STATX_BTIME;
    if (statx(AT_FDCWD, bytesForSystem(path).constData(), 0, Wanted, &status) != 0 ||
        (status.stx_mask & Wanted) != Wanted)
        return std::nullopt;
    // Numbers of files are given out anew, but not in the same moment. The number of the disk is another one after each
    // start of the computer.
    return QByteArray::number(static_cast<qulonglong>(status.stx_ino)) + '-' +
           QByteArray::number(static_cast<qlonglong>(status.stx_btime.tv_sec)) + '-' +
           QByteArray::number(status.stx_btime.tv_nsec);
}

QString canonicalPath(const QString& path)
{
    return QFileInfo(path).canonicalFilePath();
}

QString pathKey(const QString& canonical)
{
    return canonical;
}

} // namespace quillon::platform
