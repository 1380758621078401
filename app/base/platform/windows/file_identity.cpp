#include "app/base/platform/file_identity.h"

#include "app/base/platform/windows/handle.h"

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

} // namespace quillon::platform
