#pragma once

#include <QString>

#include <vector>

namespace quillon
{

/// A part of a text.
struct TextSpan {
    qsizetype begin = 0;
    qsizetype length = 0;
};

/// The parts of two texts that differ, in order.
struct TextDifference {
    std::vector<TextSpan> before;
    std::vector<TextSpan> now;
};

/// Compares two texts line by line, and in lines that differ by what they begin and end with. Lines end with a line
/// feed. Of long texts that differ much, all between the first and the last difference counts as one.
TextDifference differenceOf(const QString& before, const QString& now);

/// The numbers (from 1) of the lines of a text that its parts touch.
std::vector<int> linesOf(const QString& text, const std::vector<TextSpan>& spans);

} // namespace quillon
