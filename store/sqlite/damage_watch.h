#pragma once

#include <QString>

#include <functional>
#include <list>

struct sqlite3;

namespace quillon::sqlite
{

/// As long as it lives, tells of every time when a database turns out to be damaged, on whichever connection.
class DamageWatch
{
public:
    /// `file`: its full name without links. `listener`: is called in the middle of the work that meets with the damage,
    /// in its thread, and must neither throw nor wait.
    DamageWatch(QString file, std::function<void()> listener);
    ~DamageWatch();
    DamageWatch(const DamageWatch&) = delete;
    DamageWatch& operator=(const DamageWatch&) = delete;

private:
    friend void damageMet(sqlite3* connection);

    QString m_file;
    std::function<void()> m_listener;
    std::list<DamageWatch*>::iterator m_place;
};

/// To be called when something cannot be read because it is damaged; `connection` may be null.
void damageMet(sqlite3* connection);

} // namespace quillon::sqlite
