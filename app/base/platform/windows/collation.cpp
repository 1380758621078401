#include "app/base/platform/collation.h"

#include <windows.h>

#include <algorithm>
#include <limits>

namespace quillon::platform
{

struct Collator::Handle {
};

Collator::Collator() = default;
Collator::~Collator() = default;

void Collator::appendKey(QStringView text, std::string& keys) const
{
    const auto* units = reinterpret_cast<const wchar_t*>(text.utf16());
    const auto length = static_cast<int>(std::min<qsizetype>(text.size(), std::numeric_limits<int>::max()));
    if (length == 0)
        return;
    const int needed = LCMapStringEx(L"ja-JP", LCMAP_SORTKEY, units, length, nullptr, 0, nullptr, nullptr, 0);
    const std::size_t start = keys.size();
    keys.resize(start + static_cast<std::size_t>(needed));
    LCMapStringEx(L"ja-JP", LCMAP_SORTKEY, units, length, reinterpret_cast<wchar_t*>(keys.data() + start),
                  needed, nullptr, nullptr, 0);
    if (needed > 0)
        keys.pop_back(); // the closing zero
}

} // namespace quillon::platform
