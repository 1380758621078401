#pragma once

#include <optional>

struct sqlite3_file;
struct sqlite3_vfs;

namespace quillon::sqlite
{

// SQLite passes on what it makes of a failing file, not what the system says of it. This remembers the latter.

/// Opens a file as `system` does. What the system says of failures, of this opening and of later work with the file,
/// is remembered. A result code of SQLite.
int openTelling(sqlite3_vfs* system, const char* name, sqlite3_file* file, int flags, int* outFlags);

/// The same for a removal.
int removeTelling(sqlite3_vfs* system, const char* name, int syncFolder);

/// What the system said of the last failure in this thread, when SQLite made `code` of it.
std::optional<int> systemErrorBehind(int code);

} // namespace quillon::sqlite
