#pragma once

#include <QString>

namespace quillon
{

class Database;
class Session;

/// Makes the file at `path` the current database of the program: record sets, older layouts converted, menus
/// enabled, status texts, category tree. False when a failure was reported; what was opened before it stays.
bool OpenDbFile(Session& session, const QString& path);

/// Creates a new database file with its seven empty tables, opens it and tells the user.
/// Failures are reported as "OpenDbFile"; a file that was begun stays.
void CreateDbFile(Session& session, const QString& path);

/// Whether `database` has a table of exactly this name; false also after a reported failure.
bool TableExists(Session& session, Database& database, const QString& name);

/// Creates the two category tables in the open database.
void CreateCategoryTables(Session& session);

} // namespace quillon
