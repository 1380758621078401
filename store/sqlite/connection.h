#pragma once

#include "store/sqlite/handle.h"
#include "store/sqlite/row_watch.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace quillon::testing
{
class ConnectionHandle; // for tests that disturb a connection from below
}

namespace quillon::sqlite
{

class Statement;
class Transaction;

/// One open SQLite file. Every failure leaves as an `Error` of the program's own numbers.
class Connection
{
public:
    enum class Mode {
        OpenExisting,
        CreateNew,
        CreateOver // an empty file that is there already
    };

    /// Opens or creates the file at `path` (an absolute path).
    /// Opening never creates a file; creating a new one never opens an existing one (error 3204). A file that is
    /// created is empty until something is written into it. A file that was opened can only
    /// be read at first, and as it will be after its repair: nothing on the disk is changed before `beginUse`.
    Connection(const QString& path, Mode mode);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Makes a file that was opened one to be written, too: repairs it where a write was broken off, and gives it our
    /// kind of journal. Whatever was prepared or added before is gone. False when it is one already.
    bool beginUse();

    /// The name of the file without links.
    const QString& file() const { return m_path; }

    /// Runs one statement that returns no rows.
    void execute(const QString& sql);
    /// A prepared statement, cached by its text: a second request for the same text gets the same one, reset and
    /// with nothing bound. It must not be used in two places at once; see `prepareOwn` for that.
    Statement& prepare(const QString& sql);
    /// A prepared statement that the caller owns alone.
    std::unique_ptr<Statement> prepareOwn(const QString& sql);

    qint64 lastInsertRowid() const;
    /// How many rows the last INSERT, UPDATE or DELETE changed.
    int changes() const;
    /// How many rows this connection has changed so far.
    qint64 totalChanges() const;
    /// A number that changes whenever another connection has written the file.
    qint64 dataVersion();
    bool inTransaction() const { return m_handle.inTransaction(); }
    /// Whether a pass or a transaction keeps others from writing at this moment. Then nothing may wait for a person.
    bool holdsLock() const { return m_handle.holdsLock(); }

    /// A test of a pattern against a text, as an SQL function: name(pattern, text).
    using PatternTest = std::function<bool(const QString& pattern, QStringView text)>;
    /// Makes `test` callable in SQL under `name` (ASCII). A null text never matches.
    void addPatternTest(const char* name, PatternTest test);

    /// Tells `listener` of every row that is overwritten or deleted from now on. Not while a transaction is open.
    void watchRows(std::unique_ptr<RowListener> listener);

private:
    friend class Transaction;
    friend class testing::ConnectionHandle;

    void configure();
    void readSchema();
    void leaveLog();
    void checkSize();

    QString m_path; // without links
    bool m_inspects = false;
    std::chrono::steady_clock::time_point m_waitingSince; // for the lock of another program

    Handle m_handle;
    std::unique_ptr<RowWatch> m_watch; // if there is a listener
    struct Cache;
    std::unique_ptr<Cache> m_cache; // goes before the handle
};

} // namespace quillon::sqlite
