#pragma once

#include <QByteArrayView>
#include <QStringList>
#include <QStringView>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>

struct sqlite3;

namespace quillon::sqlite
{

/// A value as it is stored.
struct StoredValue {
    enum class Type { Null, Text, Number, Real, Bytes };

    Type type = Type::Null;
    QStringView text = {};
    qint64 number = 0;
    double real = 0;
    QByteArrayView bytes = {};
};

/// A row as it stands before it is overwritten or deleted; to be looked at during the call only.
class OldRow
{
public:
    enum class Texts { AsInMemory, ToBeConverted, InBytes }; ///< how the file keeps them
    OldRow(sqlite3* connection, const char* table, qint64 row, bool isDeleted, Texts texts)
        : m_connection(connection), m_table(table), m_row(row), m_isDeleted(isDeleted), m_texts(texts)
    {
    }

    const char* table() const { return m_table; }
    qint64 row() const { return m_row; }
    /// Otherwise it is overwritten.
    bool isDeleted() const { return m_isDeleted; }
    int fieldCount() const;
    /// Throws when there is no memory for it.
    StoredValue field(int index) const;
    /// Whether it is overwritten by something else at all.
    bool changes() const;

private:
    sqlite3* m_connection;
    const char* m_table;
    qint64 m_row;
    bool m_isDeleted;
    Texts m_texts;
    mutable QStringList m_textsWithHalves;
};

/// Who is told of every row that a connection overwrites or deletes.
class RowListener
{
public:
    virtual ~RowListener() = default;

    /// A row is about to go, for the time being: a transaction may be undone. May throw; then `missed` is told.
    virtual void rowGoes(const OldRow& row) = 0;
    /// A row goes that could not be told.
    virtual void missed() noexcept = 0;
    /// How many rows have been told since the transaction began.
    virtual std::size_t told() const noexcept = 0;
    /// All but the first `rows` of them have been put back.
    virtual void putBack(std::size_t rows) noexcept = 0;
    /// All that was told since the transaction began is durable. With nothing told, this is not called.
    virtual void durable() noexcept = 0;
    /// A good moment, in the middle of a long transaction, to put away what was told: nothing of it can be put back by
    /// itself any more.
    virtual void settled() noexcept = 0;
};

/// Watches a connection for its listener.
class RowWatch
{
public:
    RowWatch(sqlite3* connection, OldRow::Texts texts, std::unique_ptr<RowListener> listener);
    ~RowWatch();
    RowWatch(const RowWatch&) = delete;
    RowWatch& operator=(const RowWatch&) = delete;

    /// To be told before a statement writes, and when that has failed: then it is undone as a whole.
    void writeBegins() { m_writeBegan = m_listener->told(); }
    void writeFailed()
    {
        if (!m_isUncertain)
            m_listener->putBack(m_writeBegan);
    }
    /// To be told, last of all, when any statement has failed and when a transaction has been undone.
    void undone();
    /// To be told when any statement has ended well, those that end a transaction included.
    void statementEnded();

    /// To be told of parts of a transaction that may be undone by themselves. Answers what to give back at the end.
    std::size_t partBegins();
    enum class Part { Stays, Undone };
    void partEnds(std::size_t began, Part part);

private:
    static void beforeChange(void* watch, sqlite3* connection, int operation, const char* database,
                             const char* table, long long oldRow, long long newRow);
    static int commits(void* watch);
    static void rolledBack(void* watch);
    std::optional<std::array<char, 4>> stateOfFile() const;
    bool mayStand() const;

    sqlite3* m_connection;
    OldRow::Texts m_texts;
    std::unique_ptr<RowListener> m_listener;
    std::size_t m_writeBegan = 0;
    int m_parts = 0; // open ones

    // A disk that fails at the very end of a commit: SQLite holds the transaction for undone, the file may hold it.
    bool m_isCommitting = false;
    bool m_isUncertain = false;
    std::optional<std::array<char, 4>> m_stateBefore;
};

} // namespace quillon::sqlite
