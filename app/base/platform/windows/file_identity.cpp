#include "app/base/platform/file_identity.h"

#include "app/base/platform/windows/handle.h"

#include <QDir>
#include <QFileInfo>

namespace quillon::platform
{

std::optional<QByteArray> fileIdentity(const QString& path)
{
    // Opened for nothing but its attributes, which disturbs nobody.
    const Handle file = openExisting(path, 0, 0);
    FILE_ID_INFO id = {};
    FILE_BASIC_INFO times = {};
    if (!file || GetFileInformationByHandleEx(file.get(), FileIdInfo, &id, sizeof id) == 0 ||
        GetFileInformationByHandleEx(file.get(), FileBasicInfo, &times, sizeof times) == 0)
        return std::nullopt;
    const QByteArray number(reinterpret_cast<const char*>(id.FileId.Identifier), sizeof id.FileId.Identifier);
    return number.toHex() + '-' + QByteArray::number(static_cast<qlonglong>(times.CreationTime.QuadPart));
}

QString canonicalPath(const QString& path)
{
    const Handle file = openExisting(path, 0, FILE_FLAG_BACKUP_SEMANTICS);
    if (!file)
        return {};
    QString found(MAX_PATH, Qt::Uninitialized);
    for (;;) {
        const DWORD length = GetFinalPathNameByHandleW(file.get(), reinterpret_cast<wchar_t*>(found.data()),
                                                       static_cast<DWORD>(found.size()),
                                                       FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
        if (length == 0) // a disk that does not tell
            return QFileInfo(path).canonicalFilePath();
        const bool fits = length < static_cast<DWORD>(found.size());
        found.resize(length);
        if (fits)
            break;
    }
    const QLatin1String Network("\\\\?\\UNC\\");
    const QLatin1String Verbatim("\\\\?\\");
    if (found.startsWith(Network))
        found.replace(0, Network.size(), QLatin1String("\\\\"));
    else if (found.startsWith(Verbatim))
        found.remove(0, Verbatim.size());
    return QDir::fromNativeSeparators(found);
}

QString pathKey(const QString& canonical)
{
    return canonical.toCaseFolded();
}

} // namespace quillon::platform
