#pragma once

#include "store/record_set.h"
#include "store/sqlite/statement.h"

#include <initializer_list>
#include <limits>
#include <memory>

namespace quillon
{

/// Goes through a whole table piece by piece. Between two pieces nothing is locked, so that whoever passes the rows on
/// may wait; rows that are written meanwhile are met as they are by then.
class RowPieces
{
public:
    /// `fields`: those that are read, by position.
    RowPieces(const RecordSet& rows, std::initializer_list<int> fields);

    /// Visits the rows that follow, in order, until `visit` answers false. False when there are none left.
    template <class Visit> bool next(Visit&& visit)
    {
        const sqlite::ResetAtEnd reset(*m_statement);
        m_statement->reset();
        m_statement->bind(1, m_last);
        while (m_statement->step()) {
            m_last = m_statement->number(0);
            if (!visit(*this))
                return true;
        }
        return false;
    }

    /// The text of the n-th field asked for; valid during the visit. Empty for null.
    QStringView text(int n) const { return m_statement->text(n + 1); }
    bool isNull(int n) const { return m_statement->isNull(n + 1); }

private:
    std::unique_ptr<sqlite::Statement> m_statement;
    qint64 m_last = std::numeric_limits<qint64>::min();
};

} // namespace quillon
