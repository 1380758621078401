#pragma once

#include <QString>

namespace quillon::platform
{

/// Writes one line to the operating system's application log where there is one a user can read, else to
/// "Quillon.log" in `programFolder`, or in the user's state folder where that is not writable.
/// What none of them takes goes to the standard error stream, where there is one.
void writeEventLog(const QString& line, const QString& programFolder);

} // namespace quillon::platform
