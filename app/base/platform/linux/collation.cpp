#include "app/base/platform/collation.h"

#include "app/base/error.h"

#include <unicode/ucol.h>

#include <algorithm>
#include <cstdint>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

struct Collator::Handle {
    UCollator* collator = nullptr;

    Handle() = default;
    ~Handle() { ucol_close(collator); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
};

Collator::Collator() : m_handle(std::make_unique<Handle>())
{
    UErrorCode status = U_ZERO_ERROR;
    m_handle->collator = ucol_open("ja", &status);
    if (U_FAILURE(status))
        throw Error(errors::InvalidArgument,
                    u"日本語の並べ替え規則が見つかりません。ICU を導入し直してください。"_s);
}

Collator::~Collator() = default;

void Collator::appendKey(QStringView text, std::string& keys) const
{
    const auto* units = reinterpret_cast<const UChar*>(text.utf16());
    const auto length =
        static_cast<int32_t>(std::min<qsizetype>(text.size(), std::numeric_limits<int32_t>::max()));
    const std::size_t start = keys.size();
    keys.resize(start + static_cast<std::size_t>(length) * 4 + 16);
    auto room = static_cast<int32_t>(keys.size() - start);
    int32_t needed = ucol_getSortKey(m_handle->collator, units, length,
                                     reinterpret_cast<uint8_t*>(keys.data() + start), room);
    if (needed > room) {
        keys.resize(start + static_cast<std::size_t>(needed));
        needed = ucol_getSortKey(m_handle->collator, units, length,
                                 reinterpret_cast<uint8_t*>(keys.data() + start), needed);
    }
    // The key ends in a zero byte that no key contains; without it keys still compare alike.
    keys.resize(start + static_cast<std::size_t>(std::max(needed - 1, 0)));
}

} // namespace quillon::platform
