#pragma once

#include <QString>

namespace quillon::platform
{

/// Makes `target`, which must not be there, a file of the same content that shares the disk's blocks with `source`.
/// False, and no file is left, where the file system cannot do that.
bool cloneFile(const QString& source, const QString& target);

} // namespace quillon::platform
