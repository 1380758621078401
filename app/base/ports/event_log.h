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
};

} // namespace quillon
