#pragma once

#include "app/base/error.h"
#include "app/base/titles.h"

#include <QString>

#include <new>
#include <utility>

namespace quillon
{

class Clock;
class Dialogs;
class EventLog;

/// What the error reporter needs of the world.
struct Reporting {
    Dialogs& dialogs;
    EventLog& eventLog;
    Clock& clock;
    /// The name of the operation at work, empty between them; of several inside each other, the outermost.
    QString operation = {};
};

/// Gives the work of a block the name of its operation.
class OperationAtWork
{
public:
    enum class Inside {
        KeepsOuterName, ///< a part of a larger operation
        HasOwnName      ///< an event of its own, even while the handler of another waits for a modal window
    };
    OperationAtWork(Reporting& reporting, const QString& name, Inside inside = Inside::KeepsOuterName)
        : m_reporting(reporting), m_before(reporting.operation)
    {
        if (m_before.isEmpty() || inside == Inside::HasOwnName)
            reporting.operation = name;
    }
    ~OperationAtWork() { m_reporting.operation = m_before; }
    OperationAtWork(const OperationAtWork&) = delete;
    OperationAtWork& operator=(const OperationAtWork&) = delete;

private:
    Reporting& m_reporting;
    QString m_before;
};

/// Tells the user about a failure in the one fixed form and writes one line to the event log.
/// `errorNumber`: 0 does nothing. `location`: the name of the operation that failed.
void ReportError(Reporting& reporting, qint32 errorNumber, const QString& location);
/// The same with what the failure itself says about it.
void ReportError(Reporting& reporting, const Error& error, const QString& location);

/// The answer to a failure that no operation trapped: a box, the reporter's log line, and the program goes on.
/// `location`: the name of the event handler.
/// `title`: a handler with an answer of its own to failures may have another one.
void reportUntrapped(Reporting& reporting, const Error& error, const QString& location,
                     const QString& title = titles::FailureCountermeasures);

/// The log line of a failure that costs the user nothing now, so that no box shall interrupt.
void logFailure(Reporting& reporting, const Error& error, const QString& location);

/// Runs an operation and gives its failure, a lack of memory included, to `onFailure`: for handlers that show a failure
/// box of their own.
template <class OnFailure, class Operation> void guardedBy(OnFailure&& onFailure, Operation&& operation)
{
    try {
        std::forward<Operation>(operation)();
    } catch (const Error& error) {
        std::forward<OnFailure>(onFailure)(error);
    } catch (const std::bad_alloc&) {
        std::forward<OnFailure>(onFailure)(Error(errors::OutOfMemory));
    }
}

/// Runs an operation under its own name: a failure is reported and ends the operation, nothing is rolled back.
/// Keep the result outside `operation`, so that it is whatever it was when the failure happened.
template <class Operation> void guarded(Reporting& reporting, const QString& location, Operation&& operation)
{
    const OperationAtWork atWork(reporting, location);
    guardedBy([&](const Error& error) { ReportError(reporting, error, location); },
              std::forward<Operation>(operation));
}

} // namespace quillon
