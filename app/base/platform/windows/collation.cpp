#include "app/base/platform/collation.h"

#include <windows.h>

#include <algorithm>
#include <limits>

namespace quillon::platform
{

namespace
{

// As elsewhere: one kana is like the other, a wide letter like a narrow one, and a hyphen is a character.
constexpr DWORD Flags = LCMAP_SORTKEY | SORT_STRINGSORT | NORM_IGNOREKANATYPE | NORM_IGNOREWIDTH;

} // namespace

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
    const int needed = LCMapStringEx(L"ja-JP", Flags, units, length, nullptr, 0, nullptr, nullptr, 0);
    const std::size_t start = keys.size();
    keys.resize(start + static_cast<std::size_t>(needed));
    LCMapStringEx(L"ja-JP", Flags, units, length, reinterpret_cast<wchar_t*>(keys.data() + start), needed,
                  nullptr, nullptr, 0);
    if (needed > 0)
        keys.pop_back(); // the closing zero
}

} // namespace quillon::platform
