#pragma once

#include "app/base/ports/desktop.h"

#include <QString>

namespace quillon::platform
{

/// Opens a file with its associated application without waiting and without a shell.
OpenOutcome openWithAssociatedApplication(const QString& path);

} // namespace quillon::platform
