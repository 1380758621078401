#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

#include <algorithm>
#include <bit>
#include <optional>
#include <utility>
#include <vector>

namespace quillon
{

/// The number of an identifier such as "M-991231-001": letter, date and sequence; never 0. Different identifiers have
/// different numbers. Nothing for any other text.
inline std::optional<quint64> identifierNumber(QStringView identifier)
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

/// Values by identifier, for going through long tables. Identifiers of the usual form are kept as numbers, which cost
/// no memory of their own each.
template <class Value> class IdentifierTable
{
public:
    /// `expected`: about how many identifiers there will be.
    explicit IdentifierTable(qsizetype expected)
        : m_slots(std::bit_ceil(
              std::max(static_cast<std::size_t>(std::max<qsizetype>(expected, 0)) * 2, LeastSlots)))
    {
    }

    /// Puts a value in; the one that an identifier has already stays.
    void insert(QStringView identifier, const Value& value)
    {
        const std::optional<quint64> number = identifierNumber(identifier);
        if (!number) {
            if (!m_others.contains(identifier.toString()))
                m_others.insert(identifier.toString(), value);
            return;
        }
        Slot& slot = m_slots[placeOf(*number)];
        if (slot.number == *number)
            return;
        slot = {*number, value};
        // A table that fills up gets slow long before it is full.
        if (++m_count * 2 > m_slots.size())
            grow();
    }

    /// The value of an identifier, valid until the next insertion; null when it has none.
    const Value* find(QStringView identifier) const
    {
        if (const std::optional<quint64> number = identifierNumber(identifier)) {
            const Slot& slot = m_slots[placeOf(*number)];
            return slot.number == *number ? &slot.value : nullptr;
        }
        if (m_others.isEmpty())
            return nullptr;
        const auto found = m_others.constFind(identifier.toString());
        return found != m_others.cend() ? &*found : nullptr;
    }

private:
    static constexpr std::size_t LeastSlots = 64;

    struct Slot {
        quint64 number = 0; // 0 for a free one
        [[no_unique_address]] Value value = {};
    };

    std::size_t placeOf(quint64 number) const
    {
        const std::size_t mask = m_slots.size() - 1;
        // Neighbouring numbers are the rule; multiplying spreads them.
        std::size_t place = static_cast<std::size_t>((number * 0x9E3779B97F4A7C15ULL) >> 32) & mask;
        while (m_slots[place].number != 0 && m_slots[place].number != number)
            place = (place + 1) & mask;
        return place;
    }

    void grow()
    {
        std::vector<Slot> old(m_slots.size() * 2);
        old.swap(m_slots);
        for (Slot& slot : old) {
            if (slot.number != 0)
                m_slots[placeOf(slot.number)] = std::move(slot);
        }
    }

    std::vector<Slot> m_slots; // open addressing, a power of two of them
    std::size_t m_count = 0;
    QHash<QString, Value> m_others;
};

} // namespace quillon
