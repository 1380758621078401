#include "app/base/platform/background.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quillon::platform
{

void workInBackground()
{
    // The call takes a thread where it says process. Where it is refused, the work is done all the same.
    constexpr int Least = 19;
    const auto thread = static_cast<id_t>(syscall(SYS_gettid));
    setpriority(PRIO_PROCESS, thread, Least);
    // The last of the usual class and not the class of what is idle: that may never get its turn.
    constexpr int ThreadsOwn = 1;
    constexpr int UsualClass = 2;
    constexpr int ClassShift = 13;
    constexpr int LastOfClass = 7;
    syscall(SYS_ioprio_set, ThreadsOwn, 0, (UsualClass << ClassShift) | LastOfClass);
}

} // namespace quillon::platform
