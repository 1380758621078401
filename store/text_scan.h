#pragma once

#include <QStringView>

namespace quillon
{

/// The first place in [begin, end) where the units of `needle` (at least one) stand; `end` when there is none. Made for
/// texts of many megabytes: it takes as long as reading them from memory, where the processor has vector instructions.
const char16_t* findUnits(const char16_t* begin, const char16_t* end, QStringView needle);

/// The same one place after the other, on any processor.
const char16_t* findUnitsPlainly(const char16_t* begin, const char16_t* end, QStringView needle);

} // namespace quillon
