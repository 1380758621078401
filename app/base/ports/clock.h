#pragma once

#include <QDateTime>
#include <QString>

#include <chrono>

namespace quillon
{

/// The local date and time and their texts.
class Clock
{
public:
    virtual ~Clock() = default;

    virtual QDateTime now() const = 0;
    /// The date in the system's short format, for the log and the status bar.
    virtual QString shortDate() const = 0;
    /// The time in the system's short format, for the log and the status bar.
    virtual QString shortTime() const = 0;
    /// The date as identifiers take it: yy/mm/dd, on every platform.
    virtual QString identifierDate() const { return now().date().toString(u"yy/MM/dd"); }
    /// Milliseconds since some moment, which go on evenly whatever becomes of the date.
    virtual qint64 milliseconds() const
    {
        using namespace std::chrono;
        return duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count();
    }
};

} // namespace quillon
