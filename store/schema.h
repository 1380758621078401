#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <vector>

namespace quillon
{

/// A text field of a table. `width`: UTF-16 code units it holds, 0 for a long text without a limit.
struct FieldSchema {
    QString name;
    int width = 0;
};

/// A table as it is created: its fields in order and the statement that makes it.
struct TableSchema {
    QString name;
    std::vector<FieldSchema> fields;
    QString statement;

    /// The position of a field by its exact name, -1 when the table has no such field.
    int fieldIndex(QStringView fieldName) const;
};

/// The seven tables.
namespace schema
{
const TableSchema& Main();
const TableSchema& RefDoc();
const TableSchema& RefFile();
const TableSchema& OpenApp();
const TableSchema& Link();
const TableSchema& Category_ID();
const TableSchema& Category();

/// All tables in the order of their creation.
std::array<const TableSchema*, 7> all();
} // namespace schema

} // namespace quillon
