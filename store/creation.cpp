#include "store/creation.h"

#include "app/base/error.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/sqlite/statement.h"
#include "store/write_transaction.h"

#include <algorithm>
#include <cstddef>
#include <span>

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
    std::size_t made = 0;
    while (made < tables.size() && database.isAsDeclared(*tables[made]))
        ++made;
    constexpr std::size_t OlderLayout = 5; // the tables without those for categories
    if (made == tables.size() || made == OlderLayout)
        return false;
    if (numberOf(database, u"SELECT count(*) FROM sqlite_master WHERE name NOT LIKE 'sqlite_autoindex%'"_s) !=
        static_cast<qint64>(made))
        return false;
    return std::ranges::all_of(std::span(tables).first(made), [&](const TableSchema* table) {
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
