#pragma once

#include <QKeyEvent>
#include <QSet>

namespace quillon
{

/// The keys that were pressed in a control and are still down. The release of any other key belongs to a press
/// elsewhere, for example to the Enter or Esc that has just closed a message box.
class PressedKeys
{
public:
    /// The repetitions of a held key are no presses: the key may have gone down elsewhere.
    void press(const QKeyEvent& event)
    {
        if (!event.isAutoRepeat())
            m_keys.insert(event.key());
    }
    /// Whether this is the real release of a key that was pressed here.
    bool release(const QKeyEvent& event) { return !event.isAutoRepeat() && m_keys.remove(event.key()); }
    void forget() { m_keys.clear(); }
    bool any() const { return !m_keys.isEmpty(); }

private:
    QSet<int> m_keys;
};

} // namespace quillon
