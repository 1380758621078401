#pragma once

#include <QKeyEvent>
#include <QSet>

#include <utility>

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
            m_keys.insert(physicalKey(event));
    }
    /// Whether this is the real release of a key that was pressed here.
    bool release(const QKeyEvent& event)
    {
        return !event.isAutoRepeat() && m_keys.remove(physicalKey(event));
    }
    void forget() { m_keys.clear(); }
    bool any() const { return !m_keys.isEmpty(); }

private:
    /// What a key types depends on Shift, which may have been released meanwhile; its place on the keyboard does not.
    static std::pair<bool, quint32> physicalKey(const QKeyEvent& event)
    {
        const quint32 place = event.nativeScanCode();
        return place != 0 ? std::pair(true, place) : std::pair(false, static_cast<quint32>(event.key()));
    }

    QSet<std::pair<bool, quint32>> m_keys;
};

} // namespace quillon
