#include "store/row_pieces.h"

#include "store/criteria_sql.h"
#include "store/database.h"
#include "store/quoted.h"

#include <algorithm>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

RowPieces::RowPieces(const RecordSet& rows, std::initializer_list<int> fields, const QString& criteria)
{
    std::vector<int> read(fields);
    const auto columnOf = [&](int field) {
        const auto asked = std::find(read.begin(), read.end(), field);
        const auto column = static_cast<int>(asked - read.begin()) + 1;
        if (asked == read.end())
            read.push_back(field); // last, so that nobody else meets it
        return column;
    };
    QString condition;
    if (!criteria.isEmpty()) {
        const Criteria parsed = parseCriteria(criteria, rows.table());
        const bool hasTexts = rows.table().fields.size() > data_field::Explanation;
        if (const auto pattern = hasTexts ? searchedPattern(parsed) : std::nullopt) {
            m_match.emplace(*pattern);
            m_nameColumn = columnOf(data_field::Name);
            m_textColumn = columnOf(data_field::Explanation);
        } else {
            const CriteriaSql compiled = compileCriteria(parsed, rows.table());
            condition = u" AND ("_s + compiled.condition + u')';
            m_values = compiled.values;
        }
    }
    QString selected = u"rowid"_s;
    for (const int field : read)
        selected += u", "_s + quoted(rows.table().fields[static_cast<std::size_t>(field)].name);
    m_statement = rows.database().connection().prepareOwn(u"SELECT "_s + selected + u" FROM "_s +
                                                          quoted(rows.table().name) + u" WHERE rowid > ?"_s +
                                                          condition + u" ORDER BY rowid"_s);
}

void RowPieces::begin()
{
    m_statement->reset();
    m_statement->bind(1, m_last);
    int position = 1;
    for (const QString& value : std::as_const(m_values))
        m_statement->bind(++position, value);
}

} // namespace quillon
