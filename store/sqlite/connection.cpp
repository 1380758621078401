#include "store/sqlite/connection.h"

#include "app/base/error.h"
#include "store/sqlite/errors.h"
#include "store/sqlite/statement.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <sqlite3.h>

#include <algorithm>
#include <list>

using namespace Qt::Literals::StringLiterals;

namespace quillon::sqlite
{

namespace
{

/// How long a statement waits for another program's lock.
constexpr int PatienceInMilliseconds = 1500;
/// How many prepared statements a connection keeps.
constexpr std::size_t KeptStatements = 128;

/// Makes an empty file, or throws 3204 when anything stands there already.
void createEmptyFile(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists() || info.isSymLink())
        throw Error(errors::DatabaseExists);
    if (!QFileInfo(info.absolutePath()).isDir())
        throw Error(errors::PathNotFound);
    QFile file(path);
    // Only one of two programs that create the same file at the same moment succeeds here.
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        if (QFileInfo::exists(path))
            throw Error(errors::DatabaseExists);
        throw Error(errors::CannotOpen);
    }
}

} // namespace

struct Connection::Cache {
    struct Entry {
        std::unique_ptr<Statement> statement;
        std::list<QString>::iterator age;
    };
    QHash<QString, std::shared_ptr<Entry>> entries;
    std::list<QString> ages; // the one used last in front
};

Connection::Connection(const QString& path, Mode mode) : m_cache(std::make_unique<Cache>())
{
    if (mode == Mode::CreateNew)
        createEmptyFile(path);
    m_handle.open(path.toUtf8().constData());
    configure();
    if (mode == Mode::CreateNew) {
        execute(u"PRAGMA encoding = 'UTF-16le'"_s);
        // An empty transaction writes the header, so that even a file without tables is a database.
        execute(u"BEGIN IMMEDIATE"_s);
        execute(u"COMMIT"_s);
    }
    readSchema(path);
}

Connection::~Connection() = default;

void Connection::configure()
{
    sqlite3_busy_timeout(m_handle.get(), PatienceInMilliseconds);
    // A file from elsewhere brings no code of its own to run.
    for (const int forbidden :
         {SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW, SQLITE_DBCONFIG_TRUSTED_SCHEMA,
          SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, SQLITE_DBCONFIG_DQS_DML, SQLITE_DBCONFIG_DQS_DDL})
        check(m_handle.get(), sqlite3_db_config(m_handle.get(), forbidden, 0, nullptr));
    check(m_handle.get(), sqlite3_db_config(m_handle.get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr));
    execute(u"PRAGMA cell_size_check = ON"_s);
    execute(u"PRAGMA synchronous = FULL"_s);
    execute(u"PRAGMA cache_size = -8192"_s); // kibibytes: names are looked up all over the file
    execute(u"PRAGMA temp_store = MEMORY"_s);
}

/// Reads the header and the whole schema: what is no whole database fails here and not in the middle of work.
void Connection::readSchema(const QString& path)
{
    const auto numberOf = [this](const QString& question) {
        Statement statement(m_handle, question);
        return statement.step() ? statement.number(0) : 0;
    };
    // A journal of the other kind needs more files beside this one. Where another program holds the file in that
    // mode, it stays so.
    try {
        execute(u"PRAGMA journal_mode = DELETE"_s);
    } catch (const Error& error) {
        if (error.number != errors::Locked)
            throw;
    }
    execute(u"BEGIN"_s);
    numberOf(u"SELECT count(*) FROM sqlite_master"_s);
    if (sqlite3_db_readonly(m_handle.get(), "main") != 0)
        throw Error(errors::CannotOpen);
    // SQLite itself would take the missing end of the last page for zeros.
    Statement journal(m_handle, u"PRAGMA journal_mode"_s);
    const bool hasLog = journal.step() && journal.text(0) == u"wal";
    journal.reset();
    if (!hasLog &&
        QFileInfo(path).size() < numberOf(u"PRAGMA page_count"_s) * numberOf(u"PRAGMA page_size"_s))
        throw Error(errors::NotADatabase);
    execute(u"COMMIT"_s);
}

void Connection::execute(const QString& sql)
{
    Statement(m_handle, sql).run();
}

Statement& Connection::prepare(const QString& sql)
{
    if (const auto known = m_cache->entries.constFind(sql); known != m_cache->entries.cend()) {
        Cache::Entry& entry = **known;
        m_cache->ages.splice(m_cache->ages.begin(), m_cache->ages, entry.age);
        entry.statement->reset();
        return *entry.statement;
    }
    auto entry = std::make_shared<Cache::Entry>();
    entry->statement = std::make_unique<Statement>(m_handle, sql);
    m_cache->ages.push_front(sql);
    entry->age = m_cache->ages.begin();
    m_cache->entries.insert(sql, entry);
    if (m_cache->ages.size() > KeptStatements) {
        m_cache->entries.remove(m_cache->ages.back());
        m_cache->ages.pop_back();
    }
    return *entry->statement;
}

std::unique_ptr<Statement> Connection::prepareOwn(const QString& sql)
{
    return std::make_unique<Statement>(m_handle, sql);
}

void Connection::watchRows(std::unique_ptr<RowListener> listener)
{
    m_handle.setWatch(nullptr);
    m_watch.reset();
    if (!listener)
        return;
    m_watch = std::make_unique<RowWatch>(m_handle.get(), std::move(listener));
    m_handle.setWatch(m_watch.get());
}

qint64 Connection::lastInsertRowid() const
{
    return sqlite3_last_insert_rowid(m_handle.get());
}

int Connection::changes() const
{
    return sqlite3_changes(m_handle.get());
}

qint64 Connection::totalChanges() const
{
    return sqlite3_total_changes64(m_handle.get());
}

qint64 Connection::dataVersion()
{
    Statement& statement = prepare(u"PRAGMA data_version"_s);
    const ResetAtEnd reset(statement);
    return statement.step() ? statement.number(0) : 0;
}

namespace
{

QString sharedText(sqlite3_value* value)
{
    const void* units = sqlite3_value_text16(value);
    const int bytes = sqlite3_value_bytes16(value);
    return QString::fromRawData(static_cast<const QChar*>(units), bytes / static_cast<int>(sizeof(QChar)));
}

void runPatternTest(sqlite3_context* context, int, sqlite3_value** arguments)
{
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL || sqlite3_value_type(arguments[1]) == SQLITE_NULL) {
        sqlite3_result_int(context, 0);
        return;
    }
    // No exception may pass through SQLite.
    try {
        const auto& test = *static_cast<Connection::PatternTest*>(sqlite3_user_data(context));
        sqlite3_result_int(context, test(sharedText(arguments[0]), sharedText(arguments[1])) ? 1 : 0);
    } catch (...) {
        sqlite3_result_error_nomem(context);
    }
}

void deletePatternTest(void* test)
{
    delete static_cast<Connection::PatternTest*>(test);
}

} // namespace

void Connection::addPatternTest(const char* name, PatternTest test)
{
    // SQLite calls the deleter in the end, also when this call fails.
    check(m_handle.get(), sqlite3_create_function_v2(m_handle.get(), name, 2,
                                                     SQLITE_UTF16 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY,
                                                     new PatternTest(std::move(test)), runPatternTest,
                                                     nullptr, nullptr, deletePatternTest));
}

} // namespace quillon::sqlite
