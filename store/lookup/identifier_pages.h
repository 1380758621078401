#pragma once

#include <QStringView>

#include <algorithm>
#include <optional>
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

/// Lets the next element be added without asking for memory.
template <class Page> void makeRoomForOne(std::vector<Page>& pages)
{
    constexpr std::size_t First = 16;
    if (pages.size() == pages.capacity())
        pages.reserve(std::max(First, 2 * pages.size()));
}

/// Where a container keeps what belongs to identifier numbers: the numbers of a day lie close together, so it has pages
/// of as many as `2^PageBits` neighbours, and this finds the page. What is used together is in few cache lines then.
template <int PageBits> class IdentifierPages
{
public:
    static constexpr quint64 PageSize = quint64(1) << PageBits;
    static constexpr quint32 NoPage = ~quint32(0);

    IdentifierPages() : m_slots(64) {}

    /// The place of a number within its page.
    static int placeIn(quint64 number) { return static_cast<int>(number % PageSize); }
    /// The position of the page of a number, or `NoPage`.
    quint32 find(quint64 number) const
    {
        const quint64 key = number >> PageBits;
        if (key == m_last.key)
            return m_last.position;
        const Slot& slot = m_slots[slotOf(key)];
        return slot.key == key ? slot.position : NoPage;
    }
    /// The same; a page that is missing gets the position after the last one.
    quint32 findOrAdd(quint64 number)
    {
        const quint64 key = number >> PageBits;
        if (key == m_last.key)
            return m_last.position;
        std::size_t place = slotOf(key);
        if (m_slots[place].key == 0) {
            // A table that fills up gets slow long before it is full.
            if ((m_count + 1) * 2 > m_slots.size()) {
                grow();
                place = slotOf(key);
            }
            m_slots[place] = {key, m_count++};
        }
        m_last = m_slots[place];
        return m_last.position;
    }

private:
    struct Slot {
        quint64 key = 0; // 0 for a free one; identifier numbers are larger than a page
        quint32 position = 0;
    };

    std::size_t slotOf(quint64 key) const
    {
        const std::size_t mask = m_slots.size() - 1;
        // Neighbouring pages are the rule; multiplying spreads them.
        std::size_t place = static_cast<std::size_t>((key * 0x9E3779B97F4A7C15ULL) >> 32) & mask;
        while (m_slots[place].key != 0 && m_slots[place].key != key)
            place = (place + 1) & mask;
        return place;
    }

    void grow()
    {
        std::vector<Slot> old(m_slots.size() * 2);
        old.swap(m_slots);
        for (const Slot& slot : old) {
            if (slot.key != 0)
                m_slots[slotOf(slot.key)] = slot;
        }
    }

    std::vector<Slot> m_slots; // open addressing, a power of two of them
    quint32 m_count = 0;
    Slot m_last; // tables are mostly filled in the order of their identifiers
};

} // namespace quillon
