#pragma once

#include <QStringView>

#include <cstddef>
#include <vector>

namespace quillon
{

/// A part of a text, in UTF-16 units.
struct TextPlace {
    qsizetype from = 0;
    qsizetype length = 0;

    bool operator==(const TextPlace&) const = default;
};

/// Where `wanted` stands in `text`, as a Japanese reader compares (see `foldedText`), from the beginning on and without
/// overlapping. No more than `most`; none for an empty `wanted`.
std::vector<TextPlace> placesOf(QStringView wanted, QStringView text, std::size_t most);

} // namespace quillon
