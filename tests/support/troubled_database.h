#pragma once

#include "store/database.h"
#include "tests/support/connection_handle.h"

#include <QString>

#include <memory>

#include <sqlite3.h>

namespace quillon::testing
{

/// Lets a database fail at once where another program holds a lock.
inline void waitForNoLock(Database& database)
{
    database.connection().execute(QStringLiteral("PRAGMA busy_timeout = 0"));
}

/// Counts the durable writes of a database as long as it lives.
class WriteCounter
{
public:
    explicit WriteCounter(Database& database) : m_handle(ConnectionHandle::of(database))
    {
        const auto countOne = [](void* counter) {
            ++static_cast<WriteCounter*>(counter)->count;
            return 0;
        };
        sqlite3_commit_hook(m_handle, countOne, this);
    }
    ~WriteCounter() { sqlite3_commit_hook(m_handle, nullptr, nullptr); }
    WriteCounter(const WriteCounter&) = delete;
    WriteCounter& operator=(const WriteCounter&) = delete;

    int count = 0;

private:
    sqlite3* m_handle;
};

enum class Refusal {
    OfTheStatement,  // the statement fails, what was done before it stands
    OfTheTransaction // everything since the beginning of the transaction is undone, as by a full disk
};

/// Lets this connection fail with error 5 when it deletes a row of `table` for which `condition` ("OLD.Name = 'x'")
/// holds.
inline void refuseDeletion(Database& database, const QString& table, const QString& condition,
                           Refusal refusal = Refusal::OfTheStatement)
{
    const QString action =
        refusal == Refusal::OfTheStatement ? QStringLiteral("ABORT") : QStringLiteral("ROLLBACK");
    database.connection().execute(
        QStringLiteral("CREATE TEMP TRIGGER refusal_%1 BEFORE DELETE ON main.\"%1\" WHEN %2 "
                       "BEGIN SELECT RAISE(%3, 'refused'); END")
            .arg(table, condition, action));
}

inline void allowDeletion(Database& database, const QString& table)
{
    database.connection().execute(QStringLiteral("DROP TRIGGER refusal_") + table);
}

/// Another program that holds a lock on a database as long as it lives. `database` does not wait for it.
class ForeignLock
{
public:
    enum class Kind {
        Reading,  // the others can read and begin to write, but finish no write
        Writing,  // the others can read
        Exclusive // the others can do nothing
    };

    ForeignLock(Database& database, Kind kind) : m_other(Database::open(database.path()))
    {
        waitForNoLock(database);
        const QString begin = kind == Kind::Reading   ? QStringLiteral("BEGIN")
                              : kind == Kind::Writing ? QStringLiteral("BEGIN IMMEDIATE")
                                                      : QStringLiteral("BEGIN EXCLUSIVE");
        m_other->connection().execute(begin);
        if (kind == Kind::Reading)
            m_other->connection().execute(QStringLiteral("SELECT count(*) FROM sqlite_master"));
    }
    ~ForeignLock() { m_other->connection().execute(QStringLiteral("ROLLBACK")); }
    ForeignLock(const ForeignLock&) = delete;
    ForeignLock& operator=(const ForeignLock&) = delete;

private:
    std::shared_ptr<Database> m_other;
};

/// Whether another program may write at this moment.
inline bool othersMayWrite(const QString& path)
{
    const auto other = Database::open(path);
    waitForNoLock(*other);
    try {
        other->connection().execute(QStringLiteral("BEGIN IMMEDIATE"));
    } catch (const Error&) {
        return false;
    }
    other->connection().execute(QStringLiteral("ROLLBACK"));
    return true;
}

} // namespace quillon::testing
