#pragma once

#include <QString>

namespace quillon
{

/// A text on one line: each line break and each tab becomes one blank.
QString onOneLine(QString text);

} // namespace quillon
