#pragma once

#include "app/base/error.h"

struct sqlite3;

namespace quillon::sqlite
{

/// The program's error for a result code of SQLite; `connection` may be null.
Error errorOf(sqlite3* connection, int code);

/// Throws when `code` is a failure.
void check(sqlite3* connection, int code);

} // namespace quillon::sqlite
