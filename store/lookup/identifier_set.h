#pragma once

#include "store/lookup/identifier_pages.h"

#include <QSet>
#include <QString>
#include <QStringView>

#include <vector>

namespace quillon
{

/// A set of identifiers for going through long tables.
class IdentifierSet
{
public:
    void insert(QStringView identifier)
    {
        const std::optional<quint64> number = identifierNumber(identifier);
        if (!number) {
            m_others.insert(identifier.toString());
            return;
        }
        makeRoomForOne(m_pages); // the index may name no page that there is no memory for
        const quint32 position = m_index.findOrAdd(*number);
        if (position == m_pages.size())
            m_pages.push_back(0);
        m_pages[position] |= bitOf(*number);
    }
    bool contains(QStringView identifier) const
    {
        if (const std::optional<quint64> number = identifierNumber(identifier)) {
            const quint32 position = m_index.find(*number);
            return position != Index::NoPage && (m_pages[position] & bitOf(*number)) != 0;
        }
        return !m_others.isEmpty() && m_others.contains(identifier.toString());
    }

private:
    using Index = IdentifierPages<6>;

    static quint64 bitOf(quint64 number) { return quint64(1) << Index::placeIn(number); }

    Index m_index;
    std::vector<quint64> m_pages; // a bit for each identifier
    QSet<QString> m_others;
};

} // namespace quillon
