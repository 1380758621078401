#include "store/sqlite/handle.h"

#include "store/sqlite/errors.h"

#include <QByteArray>

#include <sqlite3.h>

#include <stdexcept>
#include <utility>

namespace quillon::sqlite
{

Handle::~Handle()
{
    close();
}

void Handle::open(const QString& path, Access access)
{
    // Never with the right to create: a file that vanishes in between must not come back empty.
    const int code = sqlite3_open_v2(shortEnough(path).constData(), &m_handle,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE |
                                         SQLITE_OPEN_EXRESCODE,
                                     fileSystem(access));
    check(m_handle, code);
}

void Handle::close()
{
    sqlite3_close_v2(std::exchange(m_handle, nullptr));
    m_shortPath.reset();
}

/// A name that leaves room for that of the journal.
QByteArray Handle::shortEnough(const QString& path)
{
    constexpr qsizetype Journal = 8; // "-journal"
    const sqlite3_vfs* const files = sqlite3_vfs_find(fileSystem(Access::ToUse));
    if (files == nullptr || !platform::ShortPath::isNeeded(path, Journal, files->mxPathname))
        return path.toUtf8();
    m_shortPath.emplace(path);
    if (auto shortName = m_shortPath->name())
        return *std::move(shortName);
    throw Error(errors::PathFileAccess, tooLongName());
}

bool Handle::holdsLock() const
{
    return m_handle != nullptr && sqlite3_txn_state(m_handle, nullptr) != SQLITE_TXN_NONE;
}

bool Handle::inTransaction() const
{
    return sqlite3_get_autocommit(m_handle) == 0;
}

bool Handle::isTransactionGone() const
{
    return m_transaction ? m_transaction->isGone : !inTransaction();
}

void Handle::checkTransactionIsThere() const
{
    if (!isTransactionGone())
        return;
    if (m_transaction && m_transaction->undoneBy)
        throw Error(*m_transaction->undoneBy);
    throw std::logic_error("a transaction that something else has ended");
}

void Handle::checkMayWrite() const
{
    if (!m_transaction)
        return;
    if (!m_transaction->mayWrite)
        throw std::logic_error("a write in a transaction that is there to read");
    // What was written now would be durable by itself, although it was to be so together with what is undone.
    checkTransactionIsThere();
}

void Handle::statementEnded(const Error* failure)
{
    if (!m_transaction || inTransaction())
        return;
    // Without a failure it was a statement that is none of class `Transaction`.
    if (!m_transaction->isGone && failure != nullptr)
        m_transaction->undoneBy = *failure;
    m_transaction->isGone = true;
}

} // namespace quillon::sqlite
