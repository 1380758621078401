#pragma once

#include "store/sqlite/statement.h"

#include <QString>
#include <QStringView>

#include <initializer_list>
#include <memory>
#include <vector>

namespace quillon
{
class RecordSet;
}

namespace quillon::exchange
{

/// Asks a table many times whether it holds a row of a key, and for what else is in that row, without moving a cursor.
class RowQuestion
{
public:
    /// `select`: what is asked for; `key`: the fields whose texts are compared, exactly.
    RowQuestion(const RecordSet& rows, const QString& select, const std::vector<int>& key);

    /// Whether a row is found; then `read` gets the statement that stands on it.
    template <class Read> bool ask(std::initializer_list<QStringView> key, Read&& read)
    {
        const sqlite::ResetAtEnd reset(*m_statement);
        int position = 0;
        for (const QStringView text : key)
            m_statement->bind(++position, text);
        if (!m_statement->step())
            return false;
        read(*m_statement);
        return true;
    }
    /// The same by the number of a row.
    static RowQuestion ofRowNumber(const RecordSet& rows, const QString& select);
    template <class Read> bool askRow(qint64 number, Read&& read)
    {
        const sqlite::ResetAtEnd reset(*m_statement);
        if (!m_statement->bind(1, number).step())
            return false;
        read(*m_statement);
        return true;
    }
    bool ask(std::initializer_list<QStringView> key)
    {
        return ask(key, [](const sqlite::Statement&) {});
    }

private:
    explicit RowQuestion(std::unique_ptr<sqlite::Statement> statement) : m_statement(std::move(statement)) {}

    std::unique_ptr<sqlite::Statement> m_statement;
};

} // namespace quillon::exchange
