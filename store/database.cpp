#include "store/database.h"

#include "app/base/absolute_path.h"
#include "app/base/error.h"
#include "app/base/platform/file_identity.h"
#include "app/base/platform/files.h"
#include "store/criteria_sql.h"
#include "store/memo_type.h"
#include "store/schema.h"
#include "store/sqlite/statement.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// The size of a database of one page of the smallest kind.
constexpr qint64 SmallestDatabase = 512;

/// `path` from the root on. The empty path and one with a zero in it name no file at all.
QString pathFromRoot(const QString& path, qint32 errorOfNoPath)
{
    if (path.isEmpty() || path.contains(QChar::Null))
        throw Error(errorOfNoPath);
    return absolutePath(QDir::currentPath(), path);
}

/// Refuses what would block, or would fail later in the middle of work.
void checkFile(const QString& path)
{
    const QFileInfo info(path);
    if (!platform::isOrdinaryFile(path)) {
        if (platform::isInTheWay(path))
            throw Error(errors::PathFileAccess);
        const Error reason = platform::whyNotFound(path, errors::DatabaseNotFound);
        throw reason.number == errors::PermissionDenied ? Error(errors::CannotOpen) : reason;
    }
    // The journal stands beside the file itself, wherever a link to it stands.
    const QString file = platform::canonicalPath(path);
    if (!platform::mayReadAndWrite(file) || !platform::mayWriteIn(QFileInfo(file).path()))
        throw Error(errors::CannotOpen);
    // SQLite takes an empty file, and one of a single byte, for a new database.
    if (info.size() > 0 && info.size() < SmallestDatabase)
        throw Error(errors::NotADatabase);
    for (const QString& companion : {u"-journal"_s, u"-wal"_s, u"-shm"_s}) {
        if (platform::isInTheWay(file + companion))
            throw Error(errors::PathFileAccess);
    }
}

} // namespace

Database::Database(const QString& path, sqlite::Connection::Mode mode)
    : m_path(path), m_connection(path, mode)
{
    addPatternTests(m_connection);
}

std::shared_ptr<Database> Database::open(const QString& path)
{
    auto database = inspect(path);
    database->beginUse();
    return database;
}

std::shared_ptr<Database> Database::inspect(const QString& path)
{
    auto database = inspectEmpty(path);
    sqlite::Statement& pages = database->connection().prepare(u"PRAGMA page_count"_s);
    const sqlite::ResetAtEnd reset(pages);
    if (pages.step() && pages.number(0) == 0)
        throw Error(emptyFile());
    return database;
}

std::shared_ptr<Database> Database::inspectEmpty(const QString& path)
{
    const QString full = pathFromRoot(path, errors::DatabaseNotFound);
    checkFile(full);
    return std::shared_ptr<Database>(new Database(full, sqlite::Connection::Mode::OpenExisting));
}

void Database::beginUse()
{
    if (m_connection.beginUse())
        addPatternTests(m_connection);
}

std::shared_ptr<Database> Database::create(const QString& path)
{
    auto database = beginCreation(path, false);
    // An empty transaction writes the header, so that even a file without tables is a database.
    database->connection().execute(u"BEGIN IMMEDIATE"_s);
    database->connection().execute(u"COMMIT"_s);
    return database;
}

std::shared_ptr<Database> Database::beginCreation(const QString& path, bool over)
{
    const QString full = pathFromRoot(path, errors::PathNotFound);
    if (over)
        checkFile(full);
    return std::shared_ptr<Database>(new Database(full, over ? sqlite::Connection::Mode::CreateOver
                                                             : sqlite::Connection::Mode::CreateNew));
}

Error Database::emptyFile()
{
    return {errors::NotADatabase, u"データベースの作成が途中で中断されたファイルか、空のファイルです。"
                                  u"新規データベース作成で同じ名前を指定すると、作成し直せます。"_s};
}

void Database::execute(const QString& definition)
{
    // SQLite would store numbers in a MEMO field and turn the document "0012" into 12.
    m_connection.execute(withTextForMemo(definition));
}

bool Database::tableExists(const QString& name)
{
    // A root page of 0 is that of a virtual table, which is code rather than data.
    sqlite::Statement& statement = m_connection.prepare(
        u"SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ? COLLATE BINARY AND rootpage > 0"_s);
    const sqlite::ResetAtEnd reset(statement);
    return statement.bind(1, name).step();
}

bool Database::isAsDeclared(const TableSchema& table)
{
    sqlite::Statement& statement = m_connection.prepare(
        u"SELECT sql FROM sqlite_master WHERE type = 'table' AND name = ? COLLATE BINARY"_s);
    const sqlite::ResetAtEnd reset(statement);
    if (!statement.bind(1, table.name).step())
        return false;
    // SQLite keeps the statement without what ends it.
    QString declared = withTextForMemo(table.statement).trimmed();
    if (declared.endsWith(u';'))
        declared.chop(1);
    return statement.text(0) == declared;
}

bool Database::isFileOf(const Database& other) const
{
    return m_connection.file() == other.m_connection.file();
}

qint64 Database::greatestRow(const QString& table) const
{
    return m_greatestRows.value(table, 0);
}

void Database::noteRow(const QString& table, qint64 row)
{
    qint64& greatest = m_greatestRows[table];
    greatest = std::max(greatest, row);
}

bool Database::beginsToNumber(const QString& table)
{
    const qint64 version = m_connection.dataVersion();
    const auto numberedAt = m_numberedAt.find(table);
    if (numberedAt != m_numberedAt.end() && *numberedAt == version)
        return false;
    m_numberedAt[table] = version;
    return true;
}

} // namespace quillon
