#pragma once

#include <QString>

namespace quillon
{

class Database;

/// Whether a file is what the abrupt end of a creation leaves behind: there is nothing in it but some of the tables
/// in the order in which they are made, and no row. A file of the older layout, which lacks the tables for categories,
/// is none.
bool isUnfinished(Database& database);

/// The same for the file at `path`; false also when it is not there or cannot be read.
bool isUnfinishedFile(const QString& path);

/// Creates a database file with its seven empty tables as one durable write, or finishes one that was left behind
/// unfinished. When a statement fails, the tables before it stay. Errors: 3204 when anything else stands there, 61,
/// 76, 3051.
void createDatabaseFile(const QString& path);

} // namespace quillon
