#pragma once

#include "store/lookup/identifier_table.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QStringView>

#include <vector>

namespace quillon
{
class Session;
}

namespace quillon::cli
{

/// The categories and links of all items, read in one pass over each table: for lists in which each item tells its own.
class Relations
{
public:
    explicit Relations(Session& session);

    /// The identifiers as the inside of a JSON array, in the order of their rows.
    QByteArray categoriesOf(QStringView identifier) const { return listOf(m_categories, identifier); }
    QByteArray linksOf(QStringView identifier) const { return listOf(m_links, identifier); }

private:
    static constexpr quint32 None = ~quint32(0);

    /// What belongs to identifiers: for each a chain of texts.
    struct Chains {
        struct Ends {
            quint32 first = None;
            quint32 last = None;
        };
        struct Part {
            qsizetype at = 0; // of the text
            qsizetype size = 0;
            quint32 next = None;
        };
        IdentifierTable<quint32> places; // in `ends`
        std::vector<Ends> ends;
        std::vector<Part> parts;
        QByteArray texts;

        void add(QStringView identifier, QStringView member);
    };

    static QByteArray listOf(const Chains& chains, QStringView identifier);

    Chains m_categories;
    Chains m_links;
};

} // namespace quillon::cli
