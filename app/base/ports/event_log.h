#pragma once

#include <QString>

namespace quillon
{

/// The application event log, one line per reported failure.
class EventLog
{
public:
    virtual ~EventLog() = default;
    /// Appends one line. A failure to write is ignored: the log must never be the reason of a second failure.
    virtual void write(const QString& line) = 0;
    /// A failure has been told to the person. For programs that have to answer with a number.
    virtual void failureTold(qint32 /*errorNumber*/) {}
};

} // namespace quillon
