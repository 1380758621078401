#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace quillon
{

class Database;
class RecordSet;
class Session;

/// A database file with all that a session holds of one, beside the present one until it is made the current one.
struct OpenedFile {
    using Tell = std::function<void(const QString& status)>;

    /// Opens a file of ours and converts an older layout, which is told with a box. `tell`: called before each step with
    /// what is going on. Errors: those of `Database::inspect`, of its tables and of the conversion.
    OpenedFile(Session& session, const QString& path, const Tell& tell);
    void makeCurrent(Session& session) const;

    bool wasBrokenOff = false; // in the middle of a write
    std::shared_ptr<Database> database;
    std::shared_ptr<RecordSet> main;
    std::shared_ptr<RecordSet> openApp;
    std::shared_ptr<RecordSet> refFile;
    std::shared_ptr<RecordSet> refDoc;
    std::shared_ptr<RecordSet> link;
    std::shared_ptr<RecordSet> categoryId;
    std::shared_ptr<RecordSet> category;
};

/// Whether `database` has a table of exactly this name; false also after a reported failure.
bool TableExists(Session& session, Database& database, const QString& name);

/// Creates the two category tables in a database.
void CreateCategoryTables(Session& session, const std::shared_ptr<Database>& database);

} // namespace quillon
