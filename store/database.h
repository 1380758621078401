#pragma once

#include "store/sqlite/connection.h"
#include "store/text_search.h"

#include <QHash>
#include <QString>

#include <memory>

namespace quillon
{

struct TableSchema;

/// An open database file. Kept alive by the record sets that stand on it.
class Database
{
public:
    /// Opens an existing file for reading and writing; never creates one.
    /// Errors: 3024 not there, 75 no ordinary file, 3051 may not be written, 3260 locked, 3343 no database or damaged.
    static std::shared_ptr<Database> open(const QString& path);
    /// The same, but only to be read at first: nothing on the disk changes before `beginUse`.
    static std::shared_ptr<Database> inspect(const QString& path);
    /// The same also for a file with nothing in it at all, which `inspect` refuses.
    static std::shared_ptr<Database> inspectEmpty(const QString& path);
    void beginUse();
    /// Creates a new file without any table. Errors: 3204 there already, 76 no such folder, 3051 may not be written.
    static std::shared_ptr<Database> create(const QString& path);
    /// The same, but the file is empty as long as nothing has been written into it. `over`: it is there already.
    static std::shared_ptr<Database> beginCreation(const QString& path, bool over);
    /// What an empty file is told as.
    static Error emptyFile();

    /// Runs one data-definition statement as it stands; the type MEMO becomes a type with text affinity.
    /// Error 3075 when it is more or less than one statement.
    void execute(const QString& definition);
    /// Whether a table has exactly this name.
    bool tableExists(const QString& name);

    /// Whether a table was made by the statement of its schema, so that what this says about it holds.
    bool isAsDeclared(const TableSchema& table);

    sqlite::Connection& connection() { return m_connection; }
    /// The search of names and texts in memory.
    TextSearch& textSearch() { return m_textSearch; }
    /// The full name of the file.
    const QString& path() const { return m_path; }
    /// Whether this is the same file, whatever links lead to it.
    bool isFileOf(const Database& other) const;

    /// The greatest row number that was in use in a table during this run, as far as it was noted. New rows get
    /// greater ones, so that no cursor takes a new row for a deleted one.
    qint64 greatestRow(const QString& table) const;
    void noteRow(const QString& table, qint64 row);
    /// Whether the next row of a table is the first that gets its number from this object, or the first since another
    /// program has written the file.
    bool beginsToNumber(const QString& table);

private:
    Database(const QString& path, sqlite::Connection::Mode mode);

    QString m_path;
    sqlite::Connection m_connection;
    TextSearch m_textSearch{m_connection};
    QHash<QString, qint64> m_greatestRows;
    QHash<QString, qint64> m_numberedAt; // at which version of the file a table got its last row from here
};

} // namespace quillon
