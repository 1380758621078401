#pragma once

#include <QString>

namespace quillon::platform
{

/// Gives a folder with all that is in it the name `to`. False, and `lastSystemError` tells why, when it could not, or when
/// something stands there already. Whoever only looks at what is in it for a moment does not keep it from that.
bool renameFolder(const QString& from, const QString& to);

/// Gives the file at `from` the name `to`, in the place of a file that stands there: who reads it finds the one or the
/// other. False when it could not.
bool renameOver(const QString& from, const QString& to);

} // namespace quillon::platform
