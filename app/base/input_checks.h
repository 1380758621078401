#pragma once

#include "app/base/reporting.h"

#include <QString>

namespace quillon
{

/// Whether a required field is filled; tells the user when it is not. Blanks count as filled.
bool NullCheck(Reporting& reporting, const QString& fieldText);

/// Whether a text is short enough; tells the user when it is not.
/// `maxChars`: the limit in full-width characters (two bytes of code page 932 each); a text of exactly the limit is
/// already too long. `fieldName`: the label shown to the user.
bool MaxTextCheck(Reporting& reporting, const QString& fieldText, double maxChars, const QString& fieldName);

/// `MaxTextCheck` for a text whose length is known. `bytes`: its length in code page 932.
bool MaxLengthCheck(Reporting& reporting, qsizetype bytes, double maxChars, const QString& fieldName);

/// What these two say of a field that is not filled and of a text that is too long; nothing when it is all right.
QString emptyRefusal(const QString& fieldText);
QString lengthRefusal(qsizetype bytes, double maxChars, const QString& fieldName);

/// A number in its shortest decimal form: "25", "24.5", "-3".
QString shortestDecimal(double number);

} // namespace quillon
