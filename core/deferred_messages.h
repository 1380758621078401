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
class DeferredMessages
{
public:
    DeferredMessages(Session& session, Database& database) : m_session(session), m_database(database) {}
    DeferredMessages(const DeferredMessages&) = delete;
    DeferredMessages& operator=(const DeferredMessages&) = delete;

    void add(std::function<void()> message) { m_messages.push_back(std::move(message)); }
    /// Runs a part of the write under its own name: a failure is kept and ends that part.
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
    void show() const
    {
        for (const auto& message : m_messages)
            message();
    }

private:
    Session& m_session;
    Database& m_database;
    std::vector<std::function<void()>> m_messages;
};

} // namespace quillon
