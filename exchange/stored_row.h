#pragma once

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace quillon
{
struct TableSchema;
}

namespace quillon::exchange
{

/// A row of one of the seven tables: its fields in their order, nothing for null.
using StoredRow = std::vector<std::optional<QString>>;

/// Whence the rows of the seven tables come. They are gone through several times and are the same each time.
class RowSource
{
public:
    virtual ~RowSource() = default;

    /// `where`: what a person finds the row by.
    using Visit = std::function<void(const StoredRow& row, const QString& where)>;
    virtual void forEachRow(const TableSchema& table, const Visit& visit) = 0;
};

} // namespace quillon::exchange
