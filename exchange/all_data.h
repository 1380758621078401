#pragma once

#include "exchange/spooled_texts.h"
#include "store/data_kinds.h"
#include "store/lookup/identifier_table.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

/// Everything of the open database as a reader goes through it: data with their links and categories. Read at one
/// moment, and no longer than that: writing it out may take its time without keeping others from writing.
class AllData
{
public:
    enum class Texts { Come, StayAway };
    AllData(Session& session, Texts texts);

    struct Datum {
        const DataKind* kind = nullptr;
        QString name;
        QString identifier;
        std::vector<std::size_t> linksTo = {};    // positions of data: links stored from this one
        std::vector<std::size_t> linkedFrom = {}; // the same, from the other ones
        std::vector<std::size_t> categories = {}; // positions of categories
    };
    struct Category {
        QString identifier;
        QString name;
        std::vector<std::size_t> below = {}; // positions of categories
        std::vector<std::size_t> data = {};
        bool isTop = true;
    };

    /// In the order of their tables.
    const std::vector<Datum>& data() const { return m_data; }
    const std::vector<Category>& categories() const { return m_categories; }
    /// The positions of the categories on the way to one and its own, from the top level down.
    std::vector<std::size_t> positionsTo(const Category& category) const;
    /// Their names.
    QStringList wayTo(const Category& category) const;
    /// The position of a datum, `data().size()` when there is none.
    std::size_t find(const QString& identifier) const;

    /// Visits the data in their order with their texts, which must have come along.
    using Visit = std::function<void(std::size_t position, const QString& text)>;
    void forEachText(const Visit& visit);

private:
    void readData(Session& session, Texts texts);
    void readCategories(Session& session);
    void readLinks(Session& session);

    SpooledTexts m_texts;
    std::vector<Datum> m_data;
    std::vector<Category> m_categories;
    IdentifierTable<std::size_t> m_positions;
    QHash<QString, std::size_t> m_categoryPositions;
};

} // namespace quillon::exchange
