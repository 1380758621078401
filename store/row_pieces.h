#pragma once

#include "store/record_set.h"
#include "store/sqlite/statement.h"
#include "store/text_match.h"

#include <QStringList>

#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>

namespace quillon
{

/// Goes through a whole table piece by piece. Between two pieces nothing is locked, so that whoever passes the rows on
/// may wait; rows that are written meanwhile are met as they are by then.
class RowPieces
{
public:
    /// `fields`: those that are read, by position. `criteria`: of which rows; empty for all. A search of names and
    /// explanations for one pattern is answered on the way, for nobody will ask a second time. Errors: 3075, 3061.
    RowPieces(const RecordSet& rows, std::initializer_list<int> fields, const QString& criteria = {});

    /// Visits the rows that follow, in order, until `visit` answers false or many have been passed over. False when
    /// there are none left.
    template <class Visit> bool next(Visit&& visit)
    {
        constexpr int Many = 10'000;
        const sqlite::ResetAtEnd reset(*m_statement);
        begin();
        for (int passedOver = 0; m_statement->step();) {
            m_last = m_statement->number(0);
            if (!isWanted()) {
                if (++passedOver == Many)
                    return true;
            } else if (!visit(*this)) {
                return true;
            }
        }
        return false;
    }

    /// The text of the n-th field asked for; valid during the visit. Empty for null.
    QStringView text(int n) const { return m_statement->text(n + 1); }
    bool isNull(int n) const { return m_statement->isNull(n + 1); }

private:
    void begin();
    bool isWanted() { return !m_match || holds(m_nameColumn) || holds(m_textColumn); }
    bool holds(int column)
    {
        return !m_statement->isNull(column) && m_match->matches(m_statement->text(column));
    }

    std::unique_ptr<sqlite::Statement> m_statement;
    QStringList m_values; // of the criteria that the statement asks for itself
    std::optional<TextMatch> m_match;
    int m_nameColumn = 0;
    int m_textColumn = 0;
    qint64 m_last = std::numeric_limits<qint64>::min();
};

} // namespace quillon
