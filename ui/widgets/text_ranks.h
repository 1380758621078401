#pragma once

#include "ui/widgets/cell_store.h"

#include <vector>

namespace quillon
{

/// The place of every cell among the texts of its column in Japanese order; equal texts have equal places.
std::vector<quint32> ranksOf(const TextColumn& cells);
std::vector<quint32> ranksOf(const DictionaryColumn& cells);

} // namespace quillon
