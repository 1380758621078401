#include "store/text_match.h"

#include "store/criteria.h"
#include "store/schema.h"
#include "store/text_fold.h"
#include "store/text_scan.h"

#include <algorithm>

namespace quillon
{

std::optional<QString> searchedPattern(const Criteria& criteria)
{
    const auto* junction = std::get_if<Criteria::Junction>(&criteria.node);
    if (junction == nullptr || junction->joint != Criteria::Joint::Or)
        return std::nullopt;
    const auto* left = std::get_if<Comparison>(&junction->left->node);
    const auto* right = std::get_if<Comparison>(&junction->right->node);
    if (left == nullptr || right == nullptr || left->kind != Comparison::Kind::Like ||
        right->kind != Comparison::Kind::Like || left->text != right->text)
        return std::nullopt;
    const bool bothFields = (left->field == data_field::Name && right->field == data_field::Explanation) ||
                            (left->field == data_field::Explanation && right->field == data_field::Name);
    return bothFields ? std::optional(left->text) : std::nullopt;
}

std::optional<QString> plainNeedle(const QString& pattern)
{
    if (pattern.size() < 3 || !pattern.startsWith(u'*') || !pattern.endsWith(u'*'))
        return std::nullopt;
    const QStringView inner = QStringView(pattern).sliced(1, pattern.size() - 2);
    for (const QChar unit : inner) {
        if (unit == u'*' || unit == u'?' || unit == u'#' || unit == u'[')
            return std::nullopt;
    }
    const QString needle = foldedText(inner);
    // Half of a character outside the basic plane is no part of the whole one.
    if (needle.front().isLowSurrogate() || needle.back().isHighSurrogate())
        return std::nullopt;
    return needle;
}

TextMatch::TextMatch(const QString& pattern) : m_needle(plainNeedle(pattern))
{
    if (!m_needle)
        m_pattern.emplace(pattern, LikePattern::Comparing::AsAReader);
}

bool TextMatch::matches(QStringView text)
{
    if (m_needle)
        return holdsNeedle(text);
    const qsizetype size = fold(text, 0);
    return m_pattern->matchesComparable(QStringView(m_folded.data(), size));
}

bool TextMatch::holdsNeedle(QStringView text)
{
    constexpr qsizetype Piece = 2048; // units: it stays in the fastest memory there is
    qsizetype carried = 0;            // what the needle may have begun in
    while (!text.isEmpty()) {
        const QStringView piece = beginningThatFoldsAlone(text, Piece);
        text = text.sliced(piece.size());
        const qsizetype size = fold(piece, carried);
        const char16_t* const end = m_folded.data() + size;
        if (findUnits(m_folded.data(), end, *m_needle) != end)
            return true;
        carried = std::min(size, m_needle->size() - 1);
        std::copy_n(end - carried, carried, m_folded.data());
    }
    return false;
}

qsizetype TextMatch::fold(QStringView text, qsizetype behind)
{
    const auto needed = static_cast<std::size_t>(behind + text.size());
    if (m_folded.size() < needed)
        m_folded.resize(needed);
    return behind + foldInto(text, m_folded.data() + behind);
}

} // namespace quillon
