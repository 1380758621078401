#pragma once

#include "app/base/ports/files.h"

#include <QString>

namespace quillon::platform
{

/// Copies an ordinary file to `name` in `folder` by way of a file beside it, so that a file of that name is replaced
/// as a whole or not at all. The copy is on the disk when this returns.
/// Errors: 53 no such source, 76 no such folder, 70 no access, 61 full, 75 anything else.
void copyFile(const QString& source, const QString& folder, const QString& name,
              const Files::Progress& progress);

} // namespace quillon::platform
