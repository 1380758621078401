#pragma once

#include "exchange/stored_row.h"

namespace quillon
{
class RecordSet;
class Session;
struct FieldSchema;
struct TableSchema;
} // namespace quillon

namespace quillon::exchange
{

/// The record set of one of the seven tables. Error 91 when no database is open.
RecordSet& tableOf(Session& session, const TableSchema& table);

/// Visits the rows of a table in their order. `isText`: whether all that is not null is text; what is not is given as
/// the text that it reads as.
void forEachStoredRow(const RecordSet& rows,
                      const std::function<void(const StoredRow& row, bool isText)>& visit);

/// The first field whose text is too long for it, null when there is none.
const FieldSchema* fieldTooLong(const TableSchema& table, const StoredRow& row);

} // namespace quillon::exchange
