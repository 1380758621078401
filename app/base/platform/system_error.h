#pragma once

#include "app/base/error.h"

#include <optional>

namespace quillon::platform
{

/// What the system says of its last failure in this thread.
int lastSystemError();

/// The program's error for a failure of the system. `whenMissing`: its number where what a name leads to is not there.
Error errorOfSystem(int failure, qint32 whenMissing);

/// The same for what is told alike wherever it happens: no room, too large a file, too many open files, no memory.
/// Nothing for any other failure.
std::optional<Error> errorOfLack(int failure);

} // namespace quillon::platform
