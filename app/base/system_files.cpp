#include "app/base/system_files.h"

#include "app/base/error.h"
#include "app/base/platform/copying.h"
#include "app/base/platform/files.h"
#include "app/base/platform/system_error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

bool SystemFiles::entryExists(const QString& path) const
{
    return platform::isEntry(path);
}

bool SystemFiles::fileExists(const QString& path) const
{
    return platform::isOrdinaryFile(path);
}

bool SystemFiles::folderExists(const QString& path) const
{
    return QFileInfo(path).isDir();
}

std::optional<QString> SystemFiles::storedFile(const QString& folder, const QString& name) const
{
    if (!platform::isBareName(name))
        return std::nullopt;
    const QString path = folder + QDir::separator() + name;
    if (!platform::isOrdinaryFile(path) || platform::leadsOut(folder, name))
        return std::nullopt;
    return path;
}

std::unique_ptr<StagedCopy> SystemFiles::stageCopy(const QString& source, const QString& folder,
                                                   const QString& name, const Progress& progress) const
{
    if (!platform::isBareName(name))
        throw Error(errors::PathFileAccess);
    return platform::stageCopy(source, folder, name, progress);
}

void SystemFiles::settleReplacements(const QString& folder, const Judge& judge) const
{
    platform::settleReplacements(folder, judge);
}

QByteArray SystemFiles::readFile(const QString& path, qint64 atMost) const
{
    if (!entryExists(path))
        throw Error(errors::FileNotFound);
    // A folder cannot be read; a pipe or a device might never end.
    if (!platform::isOrdinaryFile(path))
        throw Error(errors::PathFileAccess);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (const auto lack = platform::errorOfLack(platform::lastSystemError()))
            throw Error(*lack);
        throw Error(platform::mayRead(path) ? errors::PathFileAccess : errors::PermissionDenied);
    }
    // One byte more than wanted tells that there are too many, also when the file grows meanwhile.
    QByteArray bytes = file.read(atMost + 1);
    if (file.error() != QFileDevice::NoError)
        throw Error(errors::PathFileAccess);
    if (bytes.size() > atMost)
        throw Error(errors::Overflow);
    return bytes;
}

} // namespace quillon
