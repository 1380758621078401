#pragma once

struct sqlite3_file;
struct sqlite3_vfs;

namespace quillon::sqlite
{

/// Opens a database, its journal or its log, through `system`, as a file that can be read and written without being
/// changed: what is written stays in memory until it is closed. A result code of SQLite.
int openInspected(sqlite3_vfs* system, const char* name, sqlite3_file* file, int flags, int* outFlags);

/// The bytes that such a file takes in SQLite's memory.
int sizeOfInspected();

} // namespace quillon::sqlite
