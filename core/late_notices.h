#pragma once

#include "app/base/error.h"
#include "app/base/reporting.h"
#include "store/database.h"
#include "store/session.h"
#include "store/sqlite/connection.h"

#include <functional>
#include <utility>
#include <vector>

namespace quillon
{

/// What there is to tell about a durable write. It waits for the end of the write: no box may stand open while the
/// file is locked for other programs.
class LateNotices
{
public:
    LateNotices(Session& session, Database& database) : m_session(session), m_database(database) {}
    LateNotices(const LateNotices&) = delete;
    LateNotices& operator=(const LateNotices&) = delete;

    void add(std::function<void()> notice) { m_notices.push_back(std::move(notice)); }
    /// Runs a part of the write under its own name: a failure is noted and ends that part.
    template <class Operation> void trap(const QString& location, Operation&& operation)
    {
        const auto onFailure = [&](const Error& error) {
            // A full disk, for one, undoes everything by itself; then there is no write to go on with.
            if (!m_database.connection().inTransaction())
                throw error;
            add([this, location, number = error.number] {
                ReportError(m_session.reporting, number, location);
            });
        };
        guardedBy(onFailure, std::forward<Operation>(operation));
    }
    void tell() const
    {
        for (const auto& notice : m_notices)
            notice();
    }

private:
    Session& m_session;
    Database& m_database;
    std::vector<std::function<void()>> m_notices;
};

} // namespace quillon
