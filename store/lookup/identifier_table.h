#pragma once

#include "store/lookup/identifier_pages.h"

#include <QHash>
#include <QString>
#include <QStringView>

#include <array>
#include <vector>

namespace quillon
{

/// Values by identifier, for going through long tables.
template <class Value> class IdentifierTable
{
public:
    /// Puts a value in; the one that an identifier has already stays.
    void insert(QStringView identifier, const Value& value)
    {
        const std::optional<quint64> number = identifierNumber(identifier);
        if (!number) {
            if (!m_others.contains(identifier.toString()))
                m_others.insert(identifier.toString(), value);
            return;
        }
        makeRoomForOne(m_pages); // the index may name no page that there is no memory for
        const quint32 position = m_index.findOrAdd(*number);
        if (position == m_pages.size())
            m_pages.emplace_back();
        Page& page = m_pages[position];
        const int place = Index::placeIn(*number);
        if (page.holds(place))
            return;
        page.present |= 1U << place;
        page.values[static_cast<std::size_t>(place)] = value;
    }

    /// The value of an identifier, valid until the next insertion; null when it has none.
    const Value* find(QStringView identifier) const
    {
        if (const std::optional<quint64> number = identifierNumber(identifier)) {
            const quint32 position = m_index.find(*number);
            if (position == Index::NoPage)
                return nullptr;
            const Page& page = m_pages[position];
            const int place = Index::placeIn(*number);
            return page.holds(place) ? &page.values[static_cast<std::size_t>(place)] : nullptr;
        }
        if (m_others.isEmpty())
            return nullptr;
        const auto found = m_others.constFind(identifier.toString());
        return found != m_others.cend() ? &*found : nullptr;
    }

private:
    using Index = IdentifierPages<4>;

    struct Page {
        quint32 present = 0; // a bit for each value
        std::array<Value, Index::PageSize> values = {};

        bool holds(int place) const { return (present >> place & 1U) != 0; }
    };

    Index m_index;
    std::vector<Page> m_pages;
    QHash<QString, Value> m_others;
};

} // namespace quillon
