#include "ui/widgets/key_repeats.h"

#include <QCoreApplication>

#include <array>
#include <chrono>
#include <cstring>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

std::unique_ptr<QKeyEvent> copyOf(const QKeyEvent& key, bool repeats)
{
    return std::make_unique<QKeyEvent>(key.type(), key.key(), key.modifiers(), key.nativeScanCode(),
                                       key.nativeVirtualKey(), key.nativeModifiers(), key.text(), repeats,
                                       static_cast<quint16>(key.count()), key.device());
}

} // namespace

KeyRepeats::KeyRepeats(QObject* parent) : QObject(parent)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(std::chrono::milliseconds(20));
    connect(&m_patience, &QTimer::timeout, this, &KeyRepeats::deliverRelease);
    QCoreApplication::instance()->installNativeEventFilter(this);
}

KeyRepeats::~KeyRepeats() = default;

bool KeyRepeats::nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/)
{
    if (eventType != "xcb_generic_event_t"_ba)
        return false;
    // The beginning of every key event in the X protocol: its type, its key, a number, its moment.
    std::array<quint8, 8> event{};
    std::memcpy(event.data(), message, event.size());
    constexpr quint8 Press = 2;
    constexpr quint8 Release = 3;
    const auto type = static_cast<quint8>(event[0] & 0x7F); // the highest bit: sent by another program
    if (type != Press && type != Release)
        return false;
    quint32 moment = 0;
    std::memcpy(&moment, &event[4], sizeof moment);
    const std::pair<quint8, quint32> key(event[1], moment);
    if (type == Press)
        m_repeats.insert(key.first, key == m_lastRelease);
    else
        m_lastRelease = key;
    return false;
}

bool KeyRepeats::isRepeat(const QKeyEvent& press) const
{
    return press.isAutoRepeat() || m_repeats.value(press.nativeScanCode(), false);
}

bool KeyRepeats::takes(QObject* receiver, QEvent* event)
{
    if (event == m_own) {
        m_own = nullptr;
        return false;
    }
    // A window gets an event first; its controls get what the window passes on.
    if (m_repeats.isEmpty() || !receiver->isWindowType())
        return false;
    auto& window = static_cast<QWindow&>(*receiver);
    switch (event->type()) {
    case QEvent::KeyPress:
        return takesPress(window, static_cast<QKeyEvent&>(*event));
    case QEvent::KeyRelease: {
        deliverRelease();
        const auto& release = static_cast<const QKeyEvent&>(*event);
        if (release.isAutoRepeat() || release.nativeScanCode() == 0)
            return false;
        keepBack(window, release);
        return true;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::TouchBegin:
    case QEvent::Wheel:
        deliverRelease();
        return false;
    // No release before a window is closed: one that is destroyed on the screen is closed in the middle of it.
    default:
        return false;
    }
}

bool KeyRepeats::takesPress(QWindow& window, QKeyEvent& press)
{
    if (m_release && m_release->nativeScanCode() == press.nativeScanCode() && isRepeat(press)) {
        m_patience.stop();
        m_release.reset(); // the key is still down
    }
    deliverRelease();
    if (press.isAutoRepeat() || !isRepeat(press))
        return false;
    const auto marked = copyOf(press, true);
    deliver(window, *marked);
    press.setAccepted(marked->isAccepted());
    return true;
}

void KeyRepeats::keepBack(QWindow& window, const QKeyEvent& release)
{
    m_release = copyOf(release, false);
    m_window = &window;
    m_patience.start();
}

void KeyRepeats::deliverRelease()
{
    m_patience.stop();
    const std::unique_ptr<QKeyEvent> release = std::move(m_release);
    if (release && m_window)
        deliver(*m_window, *release);
}

void KeyRepeats::deliver(QWindow& window, QKeyEvent& key)
{
    m_own = &key; // only this one: in what it begins other keys may be pressed
    QCoreApplication::sendEvent(&window, &key);
}

} // namespace quillon
