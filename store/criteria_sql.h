#pragma once

#include "store/criteria.h"

#include <QString>
#include <QStringList>

namespace quillon
{

namespace sqlite
{
class Connection;
}

/// A condition for a WHERE clause with its values to bind, in order.
struct CriteriaSql {
    QString condition;
    QStringList values;
};

/// Compiles criteria to SQL; texts of the criteria become bound values and never part of the SQL.
CriteriaSql compileCriteria(const Criteria& criteria, const TableSchema& table);

/// Whether the index of a table's first field answers criteria: they ask for one identifier or for all with one beginning.
bool isAnsweredByIndex(const Criteria& criteria, const TableSchema& table);

/// Makes the pattern tests that compiled criteria call known to a connection.
void addPatternTests(sqlite::Connection& connection);

} // namespace quillon
