#pragma once

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

/// Everything of the open database but the texts, as a reader goes through it: data with their links and categories.
/// Read at one moment.
class AllData
{
public:
    explicit AllData(Session& session);

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

    /// Visits the data in their order with their texts. A text that has changed meanwhile is given as it is now.
    using Visit = std::function<void(std::size_t position, const QString& text)>;
    void forEachText(const Visit& visit) const;

private:
    void readData();
    void readCategories();
    void readLinks();

    Session& m_session;
    std::vector<Datum> m_data;
    std::vector<Category> m_categories;
    IdentifierTable<std::size_t> m_positions;
    QHash<QString, std::size_t> m_categoryPositions;
};

} // namespace quillon::exchange
