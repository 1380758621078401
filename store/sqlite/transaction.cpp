#include "store/sqlite/transaction.h"

#include "store/sqlite/connection.h"

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
        connection.checkMayWrite();
    if (connection.m_transaction == nullptr && !connection.inTransaction()) {
        connection.execute(writes ? u"BEGIN IMMEDIATE"_s : u"BEGIN"_s);
        connection.m_transaction = this;
        m_role = Role::Whole;
    } else if (writes) {
        connection.execute(u"SAVEPOINT part"_s);
        m_role = Role::Part;
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
        checkIsThere();
        m_connection.execute(m_role == Role::Whole ? u"COMMIT"_s : u"RELEASE part"_s);
    } catch (...) {
        end();
        throw;
    }
    if (std::exchange(m_role, Role::None) == Role::Whole)
        m_connection.m_transaction = nullptr;
}

void Transaction::end() noexcept
{
    const Role role = std::exchange(m_role, Role::None);
    if (role == Role::None)
        return;
    const bool isThere = !isGone();
    if (role == Role::Whole)
        m_connection.m_transaction = nullptr;
    // Whatever stands in the way of this undoes the writes as well, at the latest when the file is opened next.
    if (isThere)
        sqlite3_exec(m_connection.m_handle,
                     role == Role::Whole ? "ROLLBACK" : "ROLLBACK TO part; RELEASE part", nullptr, nullptr,
                     nullptr);
}

bool Transaction::isGone() const
{
    const Transaction* const whole = m_connection.m_transaction;
    return whole != nullptr ? whole->m_isGone : !m_connection.inTransaction();
}

void Transaction::checkIsThere() const
{
    if (!isGone())
        return;
    const Transaction* const whole = m_connection.m_transaction;
    if (whole != nullptr && whole->m_undoneBy)
        throw Error(*whole->m_undoneBy);
    throw std::logic_error("a transaction that something else has ended");
}

void Transaction::checkMayWrite() const
{
    if (m_purpose == Purpose::Reading)
        throw std::logic_error("a write in a transaction that is there to read");
    // What was written now would be durable by itself, although it was to be so together with what is undone.
    checkIsThere();
}

void Transaction::endedBySomethingElse(const Error* failure)
{
    if (!m_isGone && failure != nullptr)
        m_undoneBy = *failure;
    m_isGone = true;
}

} // namespace quillon::sqlite
