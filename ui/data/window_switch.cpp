#include "ui/data/window_switch.h"

#include "app/base/ports/data_window.h"

namespace quillon
{

void switchDataWindow(const Windows& windows, const QString& identifier)
{
    std::vector<DataWindow*> candidates;
    std::size_t current = 0;
    for (LoadedWindow* loaded : windows.loaded()) {
        DataWindow* window = loaded->asDataWindow();
        if (window == nullptr ||
            (window->windowName() != u"frmMainData" && window->windowName() != u"frmRefDoc"))
            continue;
        // sic: by identifier, not by window; a later window of the same datum stands for the earlier one.
        if (window->fieldText(1) == identifier)
            current = candidates.size();
        candidates.push_back(window);
    }
    if (candidates.size() < 2)
        return;
    candidates[current + 1 < candidates.size() ? current + 1 : 0]->bringToFront();
}

} // namespace quillon
