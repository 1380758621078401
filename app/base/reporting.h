#pragma once

#include "app/base/error.h"

#include <QString>

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
};

/// Tells the user about a failure in the one fixed form and writes one line to the event log.
/// `errorNumber`: 0 does nothing. `location`: the name of the operation that failed.
void ReportError(Reporting& reporting, qint32 errorNumber, const QString& location);

/// The answer to a failure that no operation trapped: a box, the reporter's log line, and the program goes on.
/// `location`: the name of the event handler.
void reportUntrapped(Reporting& reporting, const Error& error, const QString& location);

/// Runs an operation under its own name: a failure is reported and ends the operation, nothing is rolled back.
/// Keep the result outside `operation`, so that it is whatever it was when the failure happened.
template <class Operation> void guarded(Reporting& reporting, const QString& location, Operation&& operation)
{
    try {
        std::forward<Operation>(operation)();
    } catch (const Error& error) {
        ReportError(reporting, error.number, location);
    }
}

/// The same for handlers that show a failure box of their own: `onFailure` gets the Error.
template <class OnFailure, class Operation> void guardedBy(OnFailure&& onFailure, Operation&& operation)
{
    try {
        std::forward<Operation>(operation)();
    } catch (const Error& error) {
        std::forward<OnFailure>(onFailure)(error);
    }
}

} // namespace quillon
