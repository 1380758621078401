#pragma once

#include <QString>

namespace quillon::platform
{

/// Writes one line to the operating system's application log where there is one a user can read, else to
/// "Quillon.log" in `programFolder`, or in the user's state folder where that is not writable.
/// Failures are ignored.
void writeEventLog(const QString& line, const QString& programFolder);

} // namespace quillon::platform
