#pragma once

#include <QString>

#include <array>
#include <vector>

namespace quillon::bench
{

/// The numbers of items that growth is measured at.
inline constexpr std::array<int, 3> GrowthSizes{10'000, 100'000, 1'000'000};

/// How long an operation takes with more and more items.
struct Growth {
    QString operation;
    std::array<double, GrowthSizes.size()> seconds{};

    /// How many times as long the last step takes as the one before it; the number of items grows tenfold.
    double lastFactor() const { return seconds.back() / seconds[seconds.size() - 2]; }
};

/// A time with its unit, in three digits or fewer.
QString shownTime(double seconds);
/// With the separators of thousands.
QString shownCount(int count);

/// A Markdown table, a row for each operation.
QString growthTable(const std::vector<Growth>& operations);

/// A picture in SVG with logarithmic axes, a line for each operation, labelled at its end. It is readable on light and
/// on dark ground.
QString growthPicture(std::vector<Growth> operations);

} // namespace quillon::bench
