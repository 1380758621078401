#include "store/sqlite/statement.h"

#include "app/base/error.h"
#include "store/sqlite/errors.h"
#include "store/sqlite/half_characters.h"
#include "store/sqlite/handle.h"
#include "store/sqlite/row_watch.h"

#include <sqlite3.h>

#include <stdexcept>

namespace quillon::sqlite
{

namespace
{

constexpr char16_t ByteOrderMark = u'\uFEFF';
constexpr char16_t SwappedByteOrderMark = u'\uFFFE';

} // namespace

Statement::Statement(Handle& handle, const QString& sql) : m_handle(handle)
{
    const QByteArray utf8 = sql.toUtf8();
    const char* tail = nullptr;
    check(handle.get(), sqlite3_prepare_v3(handle.get(), utf8.constData(), static_cast<int>(utf8.size()) + 1,
                                           0, &m_statement, &tail));
    // A text without any statement gives none and no failure either; what follows the first one would never run.
    if (m_statement == nullptr || !QByteArrayView(tail, utf8.cend()).trimmed().isEmpty()) {
        sqlite3_finalize(m_statement);
        throw Error(errors::CriteriaSyntax);
    }
    m_writes = sqlite3_stmt_readonly(m_statement) == 0;
}

Statement::~Statement()
{
    sqlite3_finalize(m_statement);
}

Statement& Statement::bind(int position, QStringView text)
{
    // A null pointer would bind NULL instead of an empty text.
    const char16_t* units = text.isEmpty() ? u"" : text.utf16();
    // SQLite takes a mark at the start of a bound text for a sign of its byte order and drops it. A mark put before
    // it is dropped in its stead.
    QString marked;
    if (m_handle.storesBytes() && !text.isValidUtf16()) {
        const QByteArray bytes = bytesWithHalves(text);
        checkBound(sqlite3_bind_text64(m_statement, position, bytes.constData(),
                                       static_cast<sqlite3_uint64>(bytes.size()), SQLITE_TRANSIENT,
                                       SQLITE_UTF8));
        return *this;
    }
    if (!text.isEmpty() && (text.front() == ByteOrderMark || text.front() == SwappedByteOrderMark)) {
        marked = QString(QChar(ByteOrderMark)).append(text);
        text = marked;
        units = text.utf16();
    }
    checkBound(sqlite3_bind_text64(m_statement, position, reinterpret_cast<const char*>(units),
                                   static_cast<sqlite3_uint64>(text.size()) * sizeof(char16_t),
                                   SQLITE_TRANSIENT, SQLITE_UTF16));
    return *this;
}

Statement& Statement::bind(int position, qint64 number)
{
    checkBound(sqlite3_bind_int64(m_statement, position, number));
    return *this;
}

void Statement::checkBound(int code)
{
    if (code == SQLITE_RANGE || code == SQLITE_MISUSE)
        throw std::logic_error(
            "a value for a parameter that the statement does not have or is using already");
    check(m_handle.get(), code);
}

bool Statement::step()
{
    m_textsWithHalves.clear();
    if (m_writes)
        m_handle.checkMayWrite();
    RowWatch* const watch = m_handle.watch();
    if (watch != nullptr && m_writes && sqlite3_stmt_busy(m_statement) == 0)
        watch->writeBegins();
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW)
        return true;
    if (code == SQLITE_DONE) {
        m_handle.statementEnded(nullptr);
        if (watch != nullptr)
            watch->statementEnded();
        return false;
    }
    // The message belongs to the failed step; only afterwards may the statement let go of its locks.
    const Error error = errorOf(m_handle.get(), code);
    sqlite3_reset(m_statement);
    if (watch != nullptr && m_writes)
        watch->writeFailed();
    if (watch != nullptr)
        watch->undone();
    m_handle.statementEnded(&error);
    throw Error(error);
}

void Statement::run()
{
    const ResetAtEnd reset(*this);
    while (step()) {
    }
}

void Statement::reset()
{
    // The code is that of the last step, which has been reported already.
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

void Statement::checkColumn(int column) const
{
    // As long as no row stands ready, there are none of its columns either.
    if (column < 0 || column >= sqlite3_data_count(m_statement))
        throw std::logic_error("a column that the row of the statement does not have");
}

QStringView Statement::text(int column) const
{
    checkColumn(column);
    if (m_handle.storesBytes()) {
        const auto* const bytes = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
        const int size = sqlite3_column_bytes(m_statement, column);
        if (const auto text = textWithHalves({bytes, bytes == nullptr ? 0 : size})) {
            m_textsWithHalves << *text;
            return m_textsWithHalves.constLast();
        }
    }
    // The text first, its length afterwards: the length is that of the converted text.
    const void* units = sqlite3_column_text16(m_statement, column);
    const int bytes = sqlite3_column_bytes16(m_statement, column);
    if (units == nullptr) {
        // No text is either null or lacked memory for its conversion.
        if (sqlite3_column_type(m_statement, column) != SQLITE_NULL &&
            sqlite3_errcode(m_handle.get()) == SQLITE_NOMEM)
            throw Error(errors::OutOfMemory);
        return {};
    }
    return {static_cast<const char16_t*>(units), bytes / static_cast<int>(sizeof(char16_t))};
}

qint64 Statement::number(int column) const
{
    checkColumn(column);
    return sqlite3_column_int64(m_statement, column);
}

bool Statement::isNull(int column) const
{
    checkColumn(column);
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

bool Statement::isText(int column) const
{
    checkColumn(column);
    return sqlite3_column_type(m_statement, column) == SQLITE_TEXT;
}

} // namespace quillon::sqlite
