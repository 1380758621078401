#pragma once

#include "store/folded_texts.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace quillon
{

struct Criteria;
struct TableSchema;

namespace sqlite
{
class Connection;
}

/// Answers searches for a text in names and explanations from folded copies of the tables in memory. A copy is made by
/// the first search of its table, learns of every row that is written through this connection, and is dropped when
/// another program, or anything but the record sets, has written.
class TextSearch
{
public:
    explicit TextSearch(sqlite::Connection& connection);
    ~TextSearch();
    TextSearch(const TextSearch&) = delete;
    TextSearch& operator=(const TextSearch&) = delete;

    /// The rows, ascending, for which the criteria hold; nothing when they are not a search of names and explanations
    /// for one pattern, or while a transaction is open, whose end nobody knows.
    std::optional<std::vector<qint64>> rowsFor(const Criteria& criteria, const TableSchema& table);

    /// To be told after every single row that a record set has added, changed or deleted.
    void rowWritten(const QString& table, qint64 row);

    /// The copy of a table when it is there and in step with the file, else null. It lives as long as it is held, but
    /// the next search or write may change it.
    std::shared_ptr<const FoldedTexts> copyInStep(const QString& table);
    /// The copy of a table as it stands; null before the first search. For tests and benchmarks.
    const FoldedTexts* copyOf(const QString& table) const;

private:
    struct Copy;

    /// The copy of a table, in step with the file.
    FoldedTexts& upToDate(const TableSchema& table);
    void readAll(const TableSchema& table, FoldedTexts& texts);
    void readRow(const TableSchema& table, qint64 row, FoldedTexts& texts);

    sqlite::Connection& m_connection;
    QHash<QString, std::shared_ptr<Copy>> m_copies;
    qint64 m_changesSeen = 0; // of this connection
};

} // namespace quillon
