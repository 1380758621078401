#pragma once

#include <QObject>

namespace quillon
{

/// Shows that the program is at work, from its construction until its destruction or until the program waits for the
/// person again, be it in front of a box.
class WaitCursor
{
public:
    WaitCursor();
    ~WaitCursor();
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    void end();

    bool m_shown = true;
    QObject m_untilEvents; // what waits for the next events goes with it
};

} // namespace quillon
