#include "app/base/platform/background.h"

#include <windows.h>

namespace quillon::platform
{

void workInBackground()
{
    SetThreadPriority(GetCurrentThread(), THREAD_MODE_BACKGROUND_BEGIN);
}

} // namespace quillon::platform
