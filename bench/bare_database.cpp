#include "bench/bare_database.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <stdexcept>

namespace quillon::bench
{

BareDatabase::BareDatabase(const QString& path)
{
    if (sqlite3_open_v2(path.toUtf8().constData(), &m_handle, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        sqlite3_close(m_handle);
        throw std::runtime_error("a corpus cannot be opened");
    }
}

BareDatabase::~BareDatabase()
{
    sqlite3_close(m_handle);
}

BareStatement::BareStatement(const BareDatabase& database, const char* sql) : m_handle(database.handle())
{
    if (sqlite3_prepare_v2(m_handle, sql, -1, &m_statement, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(m_handle));
}

BareStatement::~BareStatement()
{
    sqlite3_finalize(m_statement);
}

void BareStatement::bind(int position, const QString& text)
{
    sqlite3_bind_text16(m_statement, position, text.utf16(), static_cast<int>(text.size() * 2),
                        SQLITE_TRANSIENT);
}

bool BareStatement::step()
{
    const int code = sqlite3_step(m_statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        throw std::runtime_error(sqlite3_errmsg(m_handle));
    return code == SQLITE_ROW;
}

void BareStatement::reset()
{
    sqlite3_reset(m_statement);
}

QStringView BareStatement::text(int column) const
{
    const auto* units = static_cast<const char16_t*>(sqlite3_column_text16(m_statement, column));
    return {units, sqlite3_column_bytes16(m_statement, column) / 2};
}

Touched::~Touched()
{
    benchmark::DoNotOptimize(m_sum);
}

int readAll(BareStatement& statement, int columns)
{
    Touched touched;
    int rows = 0;
    while (statement.step()) {
        for (int column = 0; column < columns; ++column)
            touched.text(statement.text(column));
        ++rows;
    }
    statement.reset();
    return rows;
}

} // namespace quillon::bench
