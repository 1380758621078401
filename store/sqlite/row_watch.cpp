#include "store/sqlite/row_watch.h"

#include "store/sqlite/errors.h"
#include "store/sqlite/half_characters.h"

#include <sqlite3.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

namespace quillon::sqlite
{

namespace
{

bool areEqual(sqlite3_value* a, sqlite3_value* b, OldRow::Texts texts)
{
    if (sqlite3_value_type(a) != sqlite3_value_type(b))
        return false;
    switch (sqlite3_value_type(a)) {
    case SQLITE_NULL:
        return true;
    case SQLITE_INTEGER:
        return sqlite3_value_int64(a) == sqlite3_value_int64(b);
    case SQLITE_FLOAT: {
        // By their bits: nothing that reads otherwise may pass for the same.
        return std::bit_cast<std::uint64_t>(sqlite3_value_double(a)) ==
               std::bit_cast<std::uint64_t>(sqlite3_value_double(b));
    }
    case SQLITE_TEXT: {
        if (texts == OldRow::Texts::InBytes) {
            // Converted, all halves of characters would be the same.
            const unsigned char* const first = sqlite3_value_text(a);
            const unsigned char* const second = sqlite3_value_text(b);
            const int bytes = sqlite3_value_bytes(a);
            return first != nullptr && second != nullptr && bytes == sqlite3_value_bytes(b) &&
                   std::memcmp(first, second, static_cast<std::size_t>(bytes)) == 0;
        }
        const void* const first = sqlite3_value_text16(a);
        const void* const second = sqlite3_value_text16(b);
        const int bytes = sqlite3_value_bytes16(a);
        return first != nullptr && second != nullptr && bytes == sqlite3_value_bytes16(b) &&
               std::memcmp(first, second, static_cast<std::size_t>(bytes)) == 0;
    }
    default: {
        const int bytes = sqlite3_value_bytes(a);
        return bytes == sqlite3_value_bytes(b) &&
               (bytes == 0 || std::memcmp(sqlite3_value_blob(a), sqlite3_value_blob(b),
                                          static_cast<std::size_t>(bytes)) == 0);
    }
    }
}

} // namespace

int OldRow::fieldCount() const
{
    return sqlite3_preupdate_count(m_connection);
}

StoredValue OldRow::field(int index) const
{
    sqlite3_value* value = nullptr;
    check(m_connection, sqlite3_preupdate_old(m_connection, index, &value));
    switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
        return {.type = StoredValue::Type::Number, .number = sqlite3_value_int64(value)};
    case SQLITE_FLOAT:
        return {.type = StoredValue::Type::Real, .real = sqlite3_value_double(value)};
    case SQLITE_TEXT: {
        if (m_texts == Texts::InBytes) {
            const auto* const utf8 = reinterpret_cast<const char*>(sqlite3_value_text(value));
            const int size = sqlite3_value_bytes(value);
            if (const auto text = textWithHalves({utf8, utf8 == nullptr ? 0 : size})) {
                m_textsWithHalves << *text;
                return {.type = StoredValue::Type::Text, .text = m_textsWithHalves.constLast()};
            }
        }
        // Asked for as a text it would be copied to get a zero at its end. The text first, its length afterwards: the
        // length is that of the converted text.
        const void* const units =
            m_texts == Texts::AsInMemory ? sqlite3_value_blob(value) : sqlite3_value_text16(value);
        const int bytes = sqlite3_value_bytes16(value);
        if (units == nullptr && bytes > 0)
            throw Error(errors::OutOfMemory);
        return {.type = StoredValue::Type::Text,
                .text = {static_cast<const char16_t*>(units), bytes / static_cast<int>(sizeof(char16_t))}};
    }
    case SQLITE_BLOB: {
        const void* const bytes = sqlite3_value_blob(value);
        return {
            .type = StoredValue::Type::Bytes,
            .bytes = {static_cast<const char*>(bytes), bytes == nullptr ? 0 : sqlite3_value_bytes(value)}};
    }
    default:
        return {};
    }
}

bool OldRow::changes() const
{
    if (m_isDeleted)
        return true;
    for (int index = 0; index < fieldCount(); ++index) {
        sqlite3_value* before = nullptr;
        sqlite3_value* after = nullptr;
        check(m_connection, sqlite3_preupdate_old(m_connection, index, &before));
        check(m_connection, sqlite3_preupdate_new(m_connection, index, &after));
        if (!areEqual(before, after, m_texts))
            return true;
    }
    return false;
}

RowWatch::RowWatch(sqlite3* connection, OldRow::Texts texts, std::unique_ptr<RowListener> listener)
    : m_connection(connection), m_texts(texts), m_listener(std::move(listener))
{
    sqlite3_preupdate_hook(connection, beforeChange, this);
    sqlite3_commit_hook(connection, commits, this);
    sqlite3_rollback_hook(connection, rolledBack, this);
}

RowWatch::~RowWatch()
{
    sqlite3_preupdate_hook(m_connection, nullptr, nullptr);
    sqlite3_commit_hook(m_connection, nullptr, nullptr);
    sqlite3_rollback_hook(m_connection, nullptr, nullptr);
}

void RowWatch::beforeChange(void* watch, sqlite3* connection, int operation, const char* database,
                            const char* table, long long oldRow, long long /*newRow*/)
{
    // A row that is new replaces nothing, and what lies in memory for the time of the run is nobody's data.
    if (operation == SQLITE_INSERT || std::strcmp(database, "main") != 0)
        return;
    const RowWatch& self = *static_cast<RowWatch*>(watch);
    RowListener& listener = *self.m_listener;
    // No exception may pass through SQLite.
    try {
        const OldRow row(connection, table, oldRow, operation == SQLITE_DELETE, self.m_texts);
        if (row.changes())
            listener.rowGoes(row);
    } catch (...) {
        listener.missed();
    }
}

int RowWatch::commits(void* watch)
{
    RowWatch& self = *static_cast<RowWatch*>(watch);
    if (self.m_listener->told() > 0) {
        self.m_isCommitting = true;
        self.m_stateBefore = self.stateOfFile();
    }
    return 0; // it may
}

void RowWatch::rolledBack(void* watch)
{
    RowWatch& self = *static_cast<RowWatch*>(watch);
    if (std::exchange(self.m_isCommitting, false))
        self.m_isUncertain = true; // nothing can be asked here
    else
        self.m_listener->putBack(0);
}

/// The counter in the header that every transaction counts on.
std::optional<std::array<char, 4>> RowWatch::stateOfFile() const
{
    constexpr sqlite3_int64 PlaceInHeader = 24;
    sqlite3_file* file = nullptr;
    std::array<char, 4> state{};
    if (sqlite3_file_control(m_connection, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr ||
        file->pMethods->xRead(file, state.data(), static_cast<int>(state.size()), PlaceInHeader) != SQLITE_OK)
        return std::nullopt;
    return state;
}

bool RowWatch::mayStand() const
{
    // Reading a row plays a journal back that is still there.
    const bool isSettled = sqlite3_exec(m_connection, "SELECT 1 FROM sqlite_schema LIMIT 1", nullptr, nullptr,
                                        nullptr) == SQLITE_OK;
    const auto state = stateOfFile();
    return !isSettled || !state || state != m_stateBefore;
}

void RowWatch::undone()
{
    if (!std::exchange(m_isUncertain, false))
        return;
    // Where nobody can tell, too much is kept rather than too little.
    if (mayStand())
        m_listener->durable();
    else
        m_listener->putBack(0);
}

void RowWatch::statementEnded()
{
    if (sqlite3_get_autocommit(m_connection) != 0)
        m_isCommitting = false;
    if (m_listener->told() == 0)
        return;
    if (sqlite3_get_autocommit(m_connection) != 0)
        m_listener->durable();
    else if (m_parts == 0)
        m_listener->settled();
}

std::size_t RowWatch::partBegins()
{
    ++m_parts;
    return m_listener->told();
}

void RowWatch::partEnds(std::size_t began, Part part)
{
    --m_parts;
    if (part == Part::Undone)
        m_listener->putBack(began);
    if (m_parts == 0 && m_listener->told() > 0)
        m_listener->settled();
}

} // namespace quillon::sqlite
