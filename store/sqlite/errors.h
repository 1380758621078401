#pragma once

struct sqlite3;

namespace quillon::sqlite
{

/// Throws the program's `Error` for a result code of SQLite; `connection` may be null.
[[noreturn]] void throwError(sqlite3* connection, int code);

/// Throws when `code` is a failure.
void check(sqlite3* connection, int code);

} // namespace quillon::sqlite
