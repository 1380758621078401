#pragma once

#include <QString>

namespace quillon
{

/// Where the page of the manual lies. `programFolder`: where the program file lies. When there is no page, the folder in
/// which it was expected.
QString manualFolder(const QString& programFolder);

} // namespace quillon
