#include "store/creation.h"

#include "app/base/error.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/sqlite/statement.h"
#include "store/write_transaction.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// How many rows a question answered by a number counts.
qint64 numberOf(Database& database, const QString& question)
{
    sqlite::Statement& statement = database.connection().prepare(question);
    const sqlite::ResetAtEnd reset(statement);
    return statement.step() ? statement.number(0) : 0;
}

} // namespace

bool isUnfinished(Database& database)
{
    const auto tables = schema::all();
    const auto missing = std::find_if(tables.begin(), tables.end(), [&](const TableSchema* table) {
        return !database.isAsDeclared(*table);
    });
    const auto made = std::distance(tables.begin(), missing);
    constexpr std::ptrdiff_t OlderLayout = 5; // the tables without those for categories
    if (missing == tables.end() || made == OlderLayout)
        return false;
    if (numberOf(database, u"SELECT count(*) FROM sqlite_master WHERE name NOT LIKE 'sqlite_autoindex%'"_s) !=
        made)
        return false;
    return std::all_of(tables.begin(), missing, [&](const TableSchema* table) {
        return numberOf(database, u"SELECT EXISTS (SELECT 1 FROM \""_s + table->name + u"\")"_s) == 0;
    });
}

bool isUnfinishedFile(const QString& path)
{
    try {
        return isUnfinished(*Database::inspectEmpty(path));
    } catch (const Error&) {
        return false;
    }
}

void createDatabaseFile(const QString& path)
{
    const auto database = Database::beginCreation(path, isUnfinishedFile(path));
    inWriteTransaction(*database, [&] {
        // Another program may have come first.
        if (!isUnfinished(*database))
            throw Error(errors::DatabaseExists);
        for (const TableSchema* table : schema::all()) {
            if (!database->tableExists(table->name))
                database->execute(table->statement);
        }
    });
}

} // namespace quillon
