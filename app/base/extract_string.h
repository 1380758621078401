#pragma once

#include "app/base/reporting.h"

#include <QString>

namespace quillon
{

/// What follows the last occurrence of `delimiter` in `text`, for example the file name of a path.
/// Only one character is skipped, so the rest of a longer delimiter stays at the front of the result.
/// Without any occurrence the user is told and the result is empty. Positions are 16-bit, that
/// from which the search goes on included: a delimiter beyond character 32766 is an overflow, reported as
/// "ExtractString" with an empty result.
QString ExtractString(Reporting& reporting, const QString& text, const QString& delimiter);

} // namespace quillon
