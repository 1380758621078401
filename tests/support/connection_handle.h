#pragma once

#include "store/database.h"

struct sqlite3;

namespace quillon::testing
{

/// What SQLite itself calls a connection, for watching or disturbing it from below.
class ConnectionHandle
{
public:
    static sqlite3* of(Database& database) { return database.connection().m_handle.get(); }
};

} // namespace quillon::testing
