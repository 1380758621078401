#pragma once

#include "store/like_pattern.h"

#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

namespace quillon
{

struct Criteria;

/// The pattern of criteria of the form Name Like 'p' OR Explanation Like 'p', in either order.
std::optional<QString> searchedPattern(const Criteria& criteria);

/// What a pattern looks for, folded, when it is nothing but a text between two stars.
std::optional<QString> plainNeedle(const QString& pattern);

/// Asks one text after the other whether it matches a pattern, as a reader compares. For a single pass over texts that
/// nobody keeps: of each no more is folded than the answer takes, always in the same memory.
class TextMatch
{
public:
    explicit TextMatch(const QString& pattern);

    bool matches(QStringView text);

private:
    bool holdsNeedle(QStringView text);
    /// Folds a text behind the units that are there; how many there are then.
    qsizetype fold(QStringView text, qsizetype behind);

    std::optional<QString> m_needle;
    std::optional<LikePattern> m_pattern; // where there is no needle
    std::vector<char16_t> m_folded;
};

} // namespace quillon
