#pragma once

#include "app/base/error.h"

#include <QString>

namespace quillon::cli
{

/// What the program answers to whoever has started it. Scripts rely on the numbers.
enum class Status {
    Done = 0,
    NothingFound = 1, ///< or nothing to do
    WrongUsage = 2,
    NoDatabase = 3, ///< it cannot be used
    Refused = 4,    ///< by a rule
    HalfWay = 5     ///< stopped, and what was done has been said
};

/// Ends a verb with a sentence for the person.
struct Refusal {
    Status status = Status::Refused;
    QString text;
};

/// The status for a failure of an operation.
Status statusOf(qint32 errorNumber);

} // namespace quillon::cli
