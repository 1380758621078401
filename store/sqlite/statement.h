#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

struct sqlite3_stmt;

namespace quillon::sqlite
{

class Handle;

/// A prepared statement: bind, step, read. Positions of parameters count from 1, columns from 0. A position or a column
/// that the statement does not have, and a column while no row stands ready, are mistakes (std::logic_error).
class Statement
{
public:
    /// Error 3075 when `sql` is not exactly one statement.
    Statement(Handle& handle, const QString& sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(int position, QStringView text);
    Statement& bind(int position, qint64 number);
    /// True when a row stands ready, false at the end.
    bool step();
    /// Steps to the end and resets; for statements that return no rows.
    void run();
    void reset();

    /// The text of a column; valid until the next step. Empty for null, see `isNull`. Numbers are written out, and
    /// bytes taken for a text in the encoding of the file: other programs may have stored either for a text.
    QStringView text(int column) const;
    /// The number of a column; what is no number counts as the one that it begins with, or 0.
    qint64 number(int column) const;
    /// Whether nothing at all is stored there; to be asked before the text.
    bool isNull(int column) const;
    /// Whether a column holds a text and not what only reads as one. To be asked before `text`.
    bool isText(int column) const;

private:
    void checkBound(int code);
    void checkColumn(int column) const;

    Handle& m_handle; // of the connection, which outlives its statements
    sqlite3_stmt* m_statement = nullptr;
    bool m_writes = false;
    mutable QStringList m_textsWithHalves; // of the row, where SQLite has no such texts itself
};

/// Resets a statement when the block ends, so that no read lock outlives it.
class ResetAtEnd
{
public:
    explicit ResetAtEnd(Statement& statement) : m_statement(statement) {}
    ~ResetAtEnd() { m_statement.reset(); }
    ResetAtEnd(const ResetAtEnd&) = delete;
    ResetAtEnd& operator=(const ResetAtEnd&) = delete;

private:
    Statement& m_statement;
};

} // namespace quillon::sqlite
