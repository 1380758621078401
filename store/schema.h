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

/// The fields of the three data tables, by position.
namespace data_field
{
inline constexpr int Name = 0;
inline constexpr int Object_ID = 1;
inline constexpr int Explanation = 2;
} // namespace data_field

/// The fields of the table of categories, by position.
namespace category_field
{
inline constexpr int Category_ID = 0;
inline constexpr int Name = 1;
} // namespace category_field

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
