#include "exchange/row_question.h"

#include "store/quoted.h"
#include "store/record_set.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

RowQuestion::RowQuestion(const RecordSet& rows, const QString& select, const std::vector<int>& key)
{
    const TableSchema& table = rows.table();
    QString sql = u"SELECT "_s + select + u" FROM "_s + quoted(table.name);
    for (const int field : key)
        sql += (field == key.front() ? u" WHERE "_s : u" AND "_s) +
               quoted(table.fields[static_cast<std::size_t>(field)].name) + u" = ? COLLATE BINARY"_s;
    m_statement = rows.database().connection().prepareOwn(sql + u" LIMIT 1"_s);
}

RowQuestion RowQuestion::ofRowNumber(const RecordSet& rows, const QString& select)
{
    return RowQuestion(rows.database().connection().prepareOwn(
        u"SELECT "_s + select + u" FROM "_s + quoted(rows.table().name) + u" WHERE rowid = ?"_s));
}

} // namespace quillon::exchange
