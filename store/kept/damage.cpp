#include "store/kept/damage.h"

#include "store/kept/copies.h"

#include <algorithm>

namespace quillon::kept
{

Damage lookForGoodCopy(const Place& place)
{
    const std::vector<Copy> copies = listCopies(place); // newest first
    const auto good = std::find_if(copies.begin(), copies.end(),
                                   [](const Copy& copy) { return !copy.isDoubtful && isUnharmed(copy); });
    return {.database = place.database(),
            .newestGood = good != copies.end() ? std::optional(good->time) : std::nullopt};
}

} // namespace quillon::kept
