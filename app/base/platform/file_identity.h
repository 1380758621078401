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

/// The one path from the root to what `path` leads to, with / and without links, in the spelling of the disk where case
/// tells nothing; empty when nothing is there.
QString canonicalPath(const QString& path);

/// The same for every spelling of a canonical path that leads to the same file.
QString pathKey(const QString& canonical);

} // namespace quillon::platform
