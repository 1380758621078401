#pragma once

#include "app/base/ports/desktop.h"
#include "app/base/ports/event_log.h"

namespace quillon
{

// For programs that play the windows without a person in front of them.

/// A desktop that opens nothing and says it did.
class SilentDesktop : public Desktop
{
public:
    OpenOutcome open(const QString& /*path*/) override { return OpenOutcome::Opened; }
    void noteRecent(const QString& /*path*/) override {}
};

/// A log that forgets.
class SilentEventLog : public EventLog
{
public:
    void write(const QString& /*line*/) override {}
};

} // namespace quillon
