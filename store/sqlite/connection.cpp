#include "store/sqlite/connection.h"

#include "app/base/error.h"
#include "app/base/platform/file_identity.h"
#include "app/base/platform/files.h"
#include "store/sqlite/errors.h"
#include "store/sqlite/half_characters.h"
#include "store/sqlite/rollback_journal.h"
#include "store/sqlite/statement.h"

#include <QFileInfo>
#include <QHash>
#include <QSysInfo>

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <list>

using namespace Qt::Literals::StringLiterals;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace quillon::sqlite
{

namespace
{

/// How long a statement waits for another program's lock.
constexpr milliseconds Patience(1500);
/// Waits for a lock until patience ends. Most locks go at once, as that of a copy that is made in steps: the engine's own
/// handler soon looks so seldom that it would wait on for a tenth of a second. `waitingSince`: a moment that belongs to
/// the connection; how long a sleep lasts is the system's affair, so the time is asked for and not added up.
int waitForLock(void* waitingSince, int attempts)
{
    constexpr milliseconds Closely(100);
    const steady_clock::time_point now = steady_clock::now();
    auto& since = *static_cast<steady_clock::time_point*>(waitingSince);
    if (attempts == 0)
        since = now;
    if (now - since >= Patience)
        return 0;
    sqlite3_sleep(now - since < Closely ? 1 : 10);
    return 1;
}

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
    // Some systems would make the file under another name, or hide it behind another one.
    if (!platform::isBareName(info.fileName()))
        throw Error(errors::PathFileAccess);
    if (!platform::fitsAsName(info.absolutePath(), info.fileName() + u"-journal"_s))
        throw Error(errors::PathFileAccess, tooLongName());
    // Only one of two programs that create the same file at the same moment succeeds here.
    try {
        if (!platform::makeNewFile(path))
            throw Error(errors::DatabaseExists);
    } catch (const Error& error) {
        if (error.number == errors::PermissionDenied)
            throw Error(errors::CannotOpen);
        throw;
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

Connection::Connection(const QString& path, Mode mode)
    : m_inspects(mode == Mode::OpenExisting), m_cache(std::make_unique<Cache>())
{
    if (mode == Mode::CreateNew)
        createEmptyFile(path);
    m_path = platform::canonicalPath(path);
    if (m_path.isEmpty()) // SQLite would take it for a database in memory
        throw Error(errors::DatabaseNotFound);
    if (!platform::fitsAsName(QFileInfo(m_path).path(), QFileInfo(m_path).fileName() + u"-journal"_s))
        throw Error(errors::PathFileAccess, tooLongName());
    if (journalNamesFurtherFiles(m_path))
        throw Error(errors::NotADatabase,
                    u"データベースは、他のファイルにもまたがる書き込みの途中で中断されています。"
                    u"書き込みをしていたプログラムで修復してからやり直してください。"_s);
    m_handle.open(m_path, m_inspects ? Access::ToInspect : Access::ToUse);
    configure();
    if (mode != Mode::OpenExisting)
        execute(u"PRAGMA encoding = 'UTF-16le'"_s);
    readSchema();
}

Connection::~Connection() = default;

bool Connection::beginUse()
{
    if (!m_inspects)
        return false;
    m_cache = std::make_unique<Cache>();
    m_handle.setWatch(nullptr);
    m_watch.reset();
    m_handle.close();
    m_inspects = false;
    m_handle.open(m_path, Access::ToUse);
    configure();
    leaveLog();
    readSchema();
    checkSize();
    return true;
}

void Connection::configure()
{
    sqlite3_busy_handler(m_handle.get(), waitForLock, &m_waitingSince);
    const auto set = [this](int setting, int value) {
        check(m_handle.get(), sqlite3_db_config(m_handle.get(), setting, value, nullptr));
    };
    // A file from elsewhere brings no code of its own to run, and no rules by which rows take others with them.
    for (const int forbidden :
         {SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW, SQLITE_DBCONFIG_TRUSTED_SCHEMA,
          SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, SQLITE_DBCONFIG_DQS_DML, SQLITE_DBCONFIG_DQS_DDL,
          SQLITE_DBCONFIG_ENABLE_FKEY})
        set(forbidden, 0);
    set(SQLITE_DBCONFIG_DEFENSIVE, 1);
    if (m_inspects) {
        // By itself, so that a log can be read without memory that is shared with others. Before anything else is read.
        execute(u"PRAGMA locking_mode = EXCLUSIVE"_s);
        execute(u"PRAGMA query_only = ON"_s);
        set(SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1);
    }
    execute(u"PRAGMA cell_size_check = ON"_s);
    execute(u"PRAGMA synchronous = EXTRA"_s); // the journal is gone for good before a write counts as done
    execute(u"PRAGMA cache_size = -8192"_s);  // kibibytes: names are looked up all over the file
    execute(u"PRAGMA temp_store = MEMORY"_s);
}

/// A journal of the other kind needs more files beside this one. Where another program holds the file in that mode, it
/// stays so.
void Connection::leaveLog()
{
    try {
        execute(u"PRAGMA journal_mode = DELETE"_s);
    } catch (const Error& error) {
        if (error.number != errors::Locked)
            throw;
    }
}

/// Reads the header and the whole schema: what is no whole database fails here and not in the middle of work.
void Connection::readSchema()
{
    execute(u"BEGIN"_s);
    {
        Statement schema(m_handle, u"SELECT count(*) FROM sqlite_master"_s);
        schema.step();
    }
    if (sqlite3_db_readonly(m_handle.get(), "main") != 0)
        throw Error(errors::CannotOpen);
    {
        Statement encoding(m_handle, u"PRAGMA encoding"_s);
        m_handle.setStoresBytes(encoding.step() && encoding.text(0) == u"UTF-8");
    }
    execute(u"COMMIT"_s);
}

/// SQLite itself would take the missing end of the last page for zeros.
void Connection::checkSize()
{
    const auto numberOf = [this](const QString& question) {
        Statement statement(m_handle, question);
        return statement.step() ? statement.number(0) : 0;
    };
    execute(u"BEGIN"_s);
    const qint64 needed = numberOf(u"PRAGMA page_count"_s) * numberOf(u"PRAGMA page_size"_s);
    Statement journal(m_handle, u"PRAGMA journal_mode"_s);
    const bool hasLog = journal.step() && journal.text(0) == u"wal";
    journal.reset();
    const QFileInfo file(m_path);
    const qint64 size = file.size();
    execute(u"COMMIT"_s);
    if (!file.exists()) // nothing can be asked about it at the moment
        throw Error(errors::PathFileAccess);
    if (!hasLog && size < needed)
        throw Error(errors::NotADatabase);
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
    Statement encoding(m_handle, u"PRAGMA encoding"_s);
    const bool isOurs =
        QSysInfo::ByteOrder == QSysInfo::LittleEndian && encoding.step() && encoding.text(0) == u"UTF-16le";
    const auto texts = isOurs                   ? OldRow::Texts::AsInMemory
                       : m_handle.storesBytes() ? OldRow::Texts::InBytes
                                                : OldRow::Texts::ToBeConverted;
    m_watch = std::make_unique<RowWatch>(m_handle.get(), texts, std::move(listener));
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

/// What SQLite hands over in the end to the test of a pattern.
struct RegisteredTest {
    Connection::PatternTest test;
    const Handle& handle; // of the connection, which outlives it
};

QString sharedText(const Handle& handle, sqlite3_value* value)
{
    if (handle.storesBytes()) {
        const auto* const utf8 = reinterpret_cast<const char*>(sqlite3_value_text(value));
        const int size = sqlite3_value_bytes(value);
        if (auto text = textWithHalves({utf8, utf8 == nullptr ? 0 : size}))
            return *std::move(text);
    }
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
        const auto& [test, handle] = *static_cast<RegisteredTest*>(sqlite3_user_data(context));
        const QString text = sharedText(handle, arguments[1]);
        sqlite3_result_int(context, test(sharedText(handle, arguments[0]), text) ? 1 : 0);
    } catch (...) {
        sqlite3_result_error_nomem(context);
    }
}

void deletePatternTest(void* test)
{
    delete static_cast<RegisteredTest*>(test);
}

} // namespace

void Connection::addPatternTest(const char* name, PatternTest test)
{
    // SQLite calls the deleter in the end, also when this call fails.
    check(m_handle.get(), sqlite3_create_function_v2(m_handle.get(), name, 2,
                                                     SQLITE_UTF16 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY,
                                                     new RegisteredTest{std::move(test), m_handle},
                                                     runPatternTest, nullptr, nullptr, deletePatternTest));
}

} // namespace quillon::sqlite
