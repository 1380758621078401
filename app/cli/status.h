#pragma once

#include "app/base/error.h"

#include <QString>

#include <utility>

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

/// The status for a failure of an operation with the database.
Status statusOf(qint32 errorNumber);

/// Whether a failure is one of a file, its folder or the right to them, other than that it is not there.
bool isTroubleOfFile(qint32 errorNumber);

/// Works with a file that the command names. What the system says against that is no trouble of the database.
template <class Work> auto withNamedFile(Work&& work)
{
    try {
        return std::forward<Work>(work)();
    } catch (const Error& error) {
        if (isTroubleOfFile(error.number))
            throw Refusal{Status::Refused, error.description};
        throw;
    }
}

} // namespace quillon::cli
