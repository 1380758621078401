#pragma once

#include <memory>

struct sqlite3;
struct sqlite3_file;

namespace quillon::sqlite
{

/// As long as it lives, what SQLite writes to a database page by page goes to the system in large pieces. For a new file
/// that nobody else knows yet.
class GatheredWrites
{
public:
    explicit GatheredWrites(sqlite3* connection);
    /// Drops what `finish` has not written.
    ~GatheredWrites();
    GatheredWrites(const GatheredWrites&) = delete;
    GatheredWrites& operator=(const GatheredWrites&) = delete;

    /// Writes what is left, and gathers nothing any more. A result code of SQLite.
    int finish();

private:
    struct Methods;

    sqlite3_file* m_file = nullptr;
    std::unique_ptr<Methods> m_methods;
};

} // namespace quillon::sqlite
