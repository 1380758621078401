#pragma once

#include <QString>

namespace quillon::platform
{

/// Where this program keeps what is the user's and no document. It need not be there yet.
QString userDataFolder();

} // namespace quillon::platform
