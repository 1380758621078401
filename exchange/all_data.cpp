#include "exchange/all_data.h"

#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

AllData::AllData(Session& session, Texts texts)
{
    const sqlite::Transaction reading(required(session.RsMain).database().connection(),
                                      sqlite::Transaction::Purpose::Reading);
    readData(session, texts);
    readCategories(session);
    readLinks(session);
}

void AllData::readData(Session& session, Texts texts)
{
    for (const DataKind& kind : data_kinds::all()) {
        const auto take = [&](const RecordSet::Row& row) {
            const QString identifier = row.text(1).toString();
            // What has no identifier of its kind cannot be led to by anything.
            if (kindOf(identifier) != &kind || m_positions.find(identifier) != nullptr)
                return;
            m_positions.insert(identifier, m_data.size());
            m_data.push_back({.kind = &kind, .name = row.text(0).toString(), .identifier = identifier});
            if (texts == Texts::Come)
                m_texts.add(row.text(2));
        };
        const RecordSet& rows = required(session.*kind.recordSet);
        if (texts == Texts::Come)
            rows.forEachRow({data_field::Name, data_field::Object_ID, data_field::Explanation}, take);
        else
            rows.forEachRow({data_field::Name, data_field::Object_ID}, take);
    }
}

std::size_t AllData::find(const QString& identifier) const
{
    const std::size_t* const position = m_positions.find(identifier);
    return position != nullptr ? *position : m_data.size();
}

void AllData::readCategories(Session& session)
{
    required(session.RsCategoryID)
        .forEachRow({category_field::Category_ID, category_field::Name}, [&](const RecordSet::Row& row) {
            const QString identifier = row.text(0).toString();
            if (identifier.isEmpty() || m_categoryPositions.contains(identifier))
                return;
            m_categoryPositions.insert(identifier, m_categories.size());
            m_categories.push_back({.identifier = identifier, .name = row.text(1).toString()});
        });
    for (std::size_t i = 0; i < m_categories.size(); ++i) {
        const QString& identifier = m_categories[i].identifier;
        const QString parent = identifier.first(std::max(qsizetype(0), identifier.lastIndexOf(u'-')));
        const auto above = m_categoryPositions.constFind(parent);
        if (above == m_categoryPositions.cend())
            continue;
        m_categories[*above].below.push_back(i);
        m_categories[i].isTop = false;
    }
    required(session.RsCategory).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
        const auto category = m_categoryPositions.constFind(row.text(0).toString());
        const std::size_t datum = find(row.text(1).toString());
        if (category == m_categoryPositions.cend() || datum == m_data.size())
            return;
        m_categories[*category].data.push_back(datum);
        m_data[datum].categories.push_back(*category);
    });
}

void AllData::readLinks(Session& session)
{
    required(session.RsLink).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
        const std::size_t from = find(row.text(0).toString());
        const std::size_t to = find(row.text(1).toString());
        if (from == m_data.size() || to == m_data.size())
            return;
        m_data[from].linksTo.push_back(to);
        if (from != to)
            m_data[to].linkedFrom.push_back(from);
    });
}

std::vector<std::size_t> AllData::positionsTo(const Category& category) const
{
    std::vector<std::size_t> positions;
    QString identifier = category.identifier;
    for (auto above = m_categoryPositions.constFind(identifier); above != m_categoryPositions.cend();
         above = m_categoryPositions.constFind(identifier)) {
        positions.insert(positions.begin(), *above);
        identifier = identifier.first(std::max(qsizetype(0), identifier.lastIndexOf(u'-')));
    }
    return positions;
}

QStringList AllData::wayTo(const Category& category) const
{
    QStringList way;
    for (const std::size_t position : positionsTo(category))
        way << m_categories[position].name;
    return way;
}

void AllData::forEachText(const Visit& visit)
{
    m_texts.rewind();
    for (std::size_t i = 0; i < m_data.size(); ++i)
        visit(i, m_texts.next());
}

} // namespace quillon::exchange
