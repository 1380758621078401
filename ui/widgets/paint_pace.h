#pragma once

#include "app/base/ports/clock.h"

namespace quillon
{

/// Tells when it is time to show again how far the work on the one thread has come.
class PaintPace
{
public:
    /// Milliseconds until the first time, and from one to the next.
    struct Times {
        qint64 first = 0;
        qint64 next = 0;
    };

    PaintPace(const Clock& clock, Times times) : m_clock(clock), m_times(times) {}

    void start()
    {
        m_wait = m_times.first;
        m_since = m_clock.milliseconds();
    }
    /// Once after every such time.
    bool isDue()
    {
        const qint64 time = m_clock.milliseconds();
        if (time - m_since < m_wait)
            return false;
        m_wait = m_times.next;
        m_since = time;
        return true;
    }

private:
    const Clock& m_clock;
    Times m_times;
    qint64 m_since = 0;
    qint64 m_wait = 0;
};

} // namespace quillon
