#include "store/sqlite/damage_watch.h"

#include "app/base/platform/file_identity.h"

#include <sqlite3.h>

#include <mutex>
#include <utility>

namespace quillon::sqlite
{

namespace
{

struct Watches {
    std::mutex mutex;
    std::list<DamageWatch*> all; // a few at most
};

Watches& watches()
{
    static Watches those;
    return those;
}

} // namespace

DamageWatch::DamageWatch(QString file, std::function<void()> listener)
    : m_file(std::move(file)), m_listener(std::move(listener))
{
    const std::lock_guard lock(watches().mutex);
    m_place = watches().all.insert(watches().all.end(), this);
}

DamageWatch::~DamageWatch()
{
    const std::lock_guard lock(watches().mutex);
    watches().all.erase(m_place);
}

void damageMet(sqlite3* connection)
{
    const char* const name = connection != nullptr ? sqlite3_db_filename(connection, "main") : nullptr;
    if (name == nullptr)
        return;
    // A long name is opened under a shorter one.
    const QString file = platform::canonicalPath(QString::fromUtf8(name));
    const std::lock_guard lock(watches().mutex);
    for (const DamageWatch* watch : watches().all) {
        if (watch->m_file == file)
            watch->m_listener();
    }
}

} // namespace quillon::sqlite
