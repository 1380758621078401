#include "store/kept/background_work.h"

#include "app/base/platform/background.h"

#include <future>
#include <system_error>

namespace quillon::kept
{

void inBackground(const std::function<void()>& work)
{
    std::future<void> done;
    try {
        done = std::async(std::launch::async, [&work] {
            platform::workInBackground();
            work();
        });
    } catch (const std::system_error&) {
        work(); // without another thread it is done all the same
        return;
    }
    done.get();
}

} // namespace quillon::kept
