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
/// file is locked for other programs. Who wrote may hand it on to whoever shows it.
class DeferredMessages
{
public:
    explicit DeferredMessages(Database& database) : m_database(database) {}

    void add(std::function<void(Session&)> message) { m_messages.push_back(std::move(message)); }
    /// Runs a part of the write under its own name: a failure is kept and ends that part.
    template <class Operation> void trap(const QString& location, Operation&& operation)
    {
        const auto onFailure = [&](const Error& error) {
            // A full disk, for one, undoes everything by itself; then there is no write to go on with.
            if (!m_database.connection().inTransaction())
                throw error;
            add([location, error](Session& session) { ReportError(session.reporting, error, location); });
        };
        guardedBy(onFailure, std::forward<Operation>(operation));
    }
    void show(Session& session) const
    {
        for (const auto& message : m_messages)
            message(session);
    }

private:
    Database& m_database; // that of the write, for as long as it goes on
    std::vector<std::function<void(Session&)>> m_messages;
};

} // namespace quillon
