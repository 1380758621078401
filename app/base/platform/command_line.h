#pragma once

#include <QStringList>

namespace quillon::platform
{

/// The words of the command line, the program's own first, with every character they may hold.
QStringList arguments(int count, char** words);

} // namespace quillon::platform
