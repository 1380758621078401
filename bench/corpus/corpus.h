#pragma once

#include <QString>
#include <QStringView>

#include <initializer_list>

namespace quillon
{
struct TableSchema;
}

namespace quillon::corpus
{

/// What a corpus consists of.
struct Options {
    int definitions = 100'000;
    int documents = 20'000;
    int documentMegabytes = 180; // of UTF-8, all documents together; a megabyte is a million bytes
    int files = 5'000;
    int categories = 2'000;
    int links = 150'000;
    int memberships = 120'000;
    quint64 seed = 1;
};

/// Why there is no such corpus; empty when there is one.
QString refusal(const Options& options);

/// Where the rows of a corpus go.
class RowSink
{
public:
    virtual ~RowSink() = default;
    /// The rows that follow belong to `table`.
    virtual void beginTable(const TableSchema& table) = 0;
    virtual void addRow(std::initializer_list<QStringView> fields) = 0;
};

/// Makes the rows of a corpus, table by table in the order of the schema. The same options give the same rows in the
/// same order, always and everywhere. Needs options that are not refused.
void makeCorpus(const Options& options, RowSink& rows);

/// Writes a corpus to a new database file of the program's own layout. Errors as of creating a database: an existing
/// file is 3204.
void writeCorpus(const Options& options, const QString& path);

} // namespace quillon::corpus
