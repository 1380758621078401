#include "core/identifier_set.h"

#include <algorithm>
#include <bit>

namespace quillon
{

namespace
{

constexpr std::size_t LeastSlots = 64;

} // namespace

IdentifierSet::IdentifierSet(qsizetype expected)
    : m_numbers(
          std::bit_ceil(std::max(static_cast<std::size_t>(std::max<qsizetype>(expected, 0)) * 2, LeastSlots)))
{
}

std::optional<quint64> IdentifierSet::numberOf(QStringView identifier)
{
    constexpr qsizetype Length = 12;
    const char16_t* const units = identifier.utf16();
    if (identifier.size() != Length || units[1] != u'-' || units[8] != u'-' || units[0] == 0)
        return std::nullopt;
    quint64 number = units[0];
    for (const int place : {2, 3, 4, 5, 6, 7, 9, 10, 11}) {
        if (units[place] < u'0' || units[place] > u'9')
            return std::nullopt;
        number = number * 10 + (units[place] - u'0');
    }
    return number;
}

std::size_t IdentifierSet::slotOf(quint64 number) const
{
    const std::size_t mask = m_numbers.size() - 1;
    // Neighbouring numbers are the rule; multiplying spreads them.
    std::size_t slot = static_cast<std::size_t>((number * 0x9E3779B97F4A7C15ULL) >> 32) & mask;
    while (m_numbers[slot] != 0 && m_numbers[slot] != number)
        slot = (slot + 1) & mask;
    return slot;
}

void IdentifierSet::grow()
{
    std::vector<quint64> old(m_numbers.size() * 2);
    old.swap(m_numbers);
    for (const quint64 number : old) {
        if (number != 0)
            m_numbers[slotOf(number)] = number;
    }
}

void IdentifierSet::insert(QStringView identifier)
{
    const std::optional<quint64> number = numberOf(identifier);
    if (!number) {
        m_others.insert(identifier.toString());
        return;
    }
    const std::size_t slot = slotOf(*number);
    if (m_numbers[slot] == *number)
        return;
    m_numbers[slot] = *number;
    // A table that fills up gets slow long before it is full.
    if (++m_count * 2 > m_numbers.size())
        grow();
}

bool IdentifierSet::contains(QStringView identifier) const
{
    if (const std::optional<quint64> number = numberOf(identifier))
        return m_numbers[slotOf(*number)] == *number;
    return !m_others.isEmpty() && m_others.contains(identifier.toString());
}

} // namespace quillon
