#pragma once

#include "app/base/error.h"
#include "app/base/platform/short_path.h"
#include "store/sqlite/file_system.h"

#include <QByteArray>
#include <QString>

#include <optional>

struct sqlite3;

namespace quillon::sqlite
{

class RowWatch;

/// What a connection, its statements and its transactions have in common: SQLite's own handle, and what has become of the
/// outermost transaction that is open on it.
class Handle
{
public:
    Handle() = default;
    /// Closes the file.
    ~Handle();
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    /// Opens a file, which must be there, by its full name without links. Errors as SQLite has them, and 75 when SQLite
    /// cannot take a name of this length.
    void open(const QString& path, Access access);
    void close();
    /// Null before `open`.
    sqlite3* get() const { return m_handle; }

    /// Whether the file keeps its texts in UTF-8; see half_characters.h.
    bool storesBytes() const { return m_storesBytes; }
    void setStoresBytes(bool storesBytes) { m_storesBytes = storesBytes; }
    /// Whether others may be kept from writing (or from reading) at this moment.
    bool holdsLock() const;

    /// Whether any transaction is open, be it begun by a statement.
    bool inTransaction() const;
    /// Whether the outermost transaction is one of class `Transaction`.
    bool hasTransaction() const { return m_transaction.has_value(); }
    /// To be told by the outermost transaction when it has begun, and before it ends.
    void transactionBegun(bool mayWrite) { m_transaction = OpenTransaction{.mayWrite = mayWrite}; }
    void transactionEnds() { m_transaction.reset(); }

    /// Whether something else has ended the transaction: a failing or full disk does.
    bool isTransactionGone() const;
    /// Refuses to go on with a transaction that is gone: fails as the statement did that met with the disk.
    void checkTransactionIsThere() const;
    /// Refuses what would be written past the open transaction.
    void checkMayWrite() const;
    /// To be told how a statement has ended (null: well), which may have ended the open transaction.
    void statementEnded(const Error* failure);

    /// Who is told of the statements and of the parts of transactions; null: nobody.
    RowWatch* watch() const { return m_watch; }
    void setWatch(RowWatch* watch) { m_watch = watch; }

private:
    struct OpenTransaction {
        bool mayWrite = false;
        bool isGone = false;
        std::optional<Error> undoneBy = {};
    };

    QByteArray shortEnough(const QString& path);

    std::optional<platform::ShortPath> m_shortPath; // as long as the file is open
    sqlite3* m_handle = nullptr;
    RowWatch* m_watch = nullptr;
    bool m_storesBytes = false;
    std::optional<OpenTransaction> m_transaction;
};

} // namespace quillon::sqlite
