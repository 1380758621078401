#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace quillon::platform
{

/// By what the file at `path` is known again under another name or in another folder of its disk: no other file has ever
/// had the same. Links are followed. Nothing when there is no file, or where the disk does not know when files were made.
/// Never opens the file.
std::optional<QByteArray> fileIdentity(const QString& path);

} // namespace quillon::platform
