#include "app/base/platform/cloning.h"

namespace quillon::platform
{

bool cloneFile(const QString& /*source*/, const QString& /*target*/)
{
    // Where the system can share blocks, its own copying does so.
    return false;
}

} // namespace quillon::platform
