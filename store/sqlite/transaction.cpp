#include "store/sqlite/transaction.h"

#include "store/sqlite/connection.h"
#include "store/sqlite/row_watch.h"

#include <sqlite3.h>

#include <stdexcept>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::sqlite
{

Transaction::Transaction(Connection& connection, Purpose purpose)
    : m_connection(connection), m_purpose(purpose)
{
    const bool writes = purpose == Purpose::Writing;
    if (writes)
        connection.m_handle.checkMayWrite();
    if (!connection.m_handle.hasTransaction() && !connection.inTransaction()) {
        connection.execute(writes ? u"BEGIN IMMEDIATE"_s : u"BEGIN"_s);
        connection.m_handle.transactionBegun(writes);
        m_role = Role::Whole;
    } else if (writes) {
        connection.execute(u"SAVEPOINT part"_s);
        m_role = Role::Part;
        if (RowWatch* const watch = connection.m_handle.watch())
            m_watched = watch->partBegins();
    }
}

Transaction::~Transaction()
{
    end();
}

void Transaction::commit()
{
    if (m_purpose != Purpose::Writing || m_role == Role::None)
        throw std::logic_error("there is nothing to commit");
    try {
        m_connection.m_handle.checkTransactionIsThere();
        m_connection.execute(m_role == Role::Whole ? u"COMMIT"_s : u"RELEASE part"_s);
    } catch (...) {
        end();
        throw;
    }
    RowWatch* const watch = m_connection.m_handle.watch();
    if (std::exchange(m_role, Role::None) == Role::Whole)
        m_connection.m_handle.transactionEnds();
    else if (watch != nullptr)
        watch->partEnds(m_watched, RowWatch::Part::Stays);
}

void Transaction::end() noexcept
{
    const Role role = std::exchange(m_role, Role::None);
    if (role == Role::None)
        return;
    const bool isThere = !m_connection.m_handle.isTransactionGone();
    if (role == Role::Whole)
        m_connection.m_handle.transactionEnds();
    // Whatever stands in the way of this undoes the writes as well, at the latest when the file is opened next.
    if (isThere)
        sqlite3_exec(m_connection.m_handle.get(),
                     role == Role::Whole ? "ROLLBACK" : "ROLLBACK TO part; RELEASE part", nullptr, nullptr,
                     nullptr);
    RowWatch* const watch = m_connection.m_handle.watch();
    if (watch == nullptr)
        return;
    if (role == Role::Part)
        watch->partEnds(m_watched, RowWatch::Part::Undone);
    else
        watch->undone();
}

} // namespace quillon::sqlite
