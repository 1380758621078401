#include "exchange/tables.h"

#include "store/record_set.h"
#include "store/session.h"

#include <array>

namespace quillon::exchange
{

RecordSet& tableOf(Session& session, const TableSchema& table)
{
    for (const auto& rows : {session.RsMain, session.RsRefDoc, session.RsRefFile, session.RsOpenApp,
                             session.RsLink, session.RsCategoryID, session.RsCategory}) {
        if (&required(rows).table() == &table)
            return *rows;
    }
    throw Error(errors::ObjectNotSet);
}

void forEachStoredRow(const RecordSet& rows,
                      const std::function<void(const StoredRow& row, bool isText)>& visit)
{
    const std::size_t count = rows.table().fields.size();
    StoredRow stored(count);
    const auto read = [&](const RecordSet::Row& row) {
        bool isText = true;
        for (std::size_t i = 0; i < count; ++i) {
            const int field = static_cast<int>(i);
            if (row.isNull(field)) {
                stored[i].reset();
                continue;
            }
            isText = row.isText(field) && isText;
            stored[i] = row.text(field).toString();
        }
        visit(stored, isText);
    };
    if (count == 2)
        rows.forEachRow({0, 1}, read);
    else
        rows.forEachRow({0, 1, 2}, read);
}

const FieldSchema* fieldTooLong(const TableSchema& table, const StoredRow& row)
{
    for (std::size_t i = 0; i < table.fields.size(); ++i) {
        const FieldSchema& field = table.fields[i];
        if (field.width > 0 && row[i] && row[i]->size() > field.width)
            return &field;
    }
    return nullptr;
}

} // namespace quillon::exchange
