#include "ui/data/window_switch.h"

#include "app/base/ports/data_window.h"
#include "store/data_kinds.h"

#include <algorithm>

namespace quillon
{

namespace
{

bool showsDatum(const DataWindow& window)
{
    const auto& kinds = data_kinds::all();
    return std::any_of(kinds.begin(), kinds.end(), [name = window.windowName()](const DataKind& kind) {
        return kind.isShownInWindow && kind.windowName == name;
    });
}

} // namespace

void switchDataWindow(const Windows& windows, const QString& identifier)
{
    std::vector<DataWindow*> candidates;
    std::size_t current = 0;
    for (LoadedWindow* loaded : windows.loaded()) {
        DataWindow* window = loaded->asDataWindow();
        if (window == nullptr || !showsDatum(*window))
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
