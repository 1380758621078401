#pragma once

#include "app/base/error.h"

struct sqlite3;

namespace quillon::sqlite
{

/// The program's error for a result code of SQLite; `connection` may be null.
Error errorOf(sqlite3* connection, int code);

/// The sentence for the name of a file that cannot be dealt with because of its length.
QString tooLongName();

/// Throws when `code` is a failure.
void check(sqlite3* connection, int code);

} // namespace quillon::sqlite
