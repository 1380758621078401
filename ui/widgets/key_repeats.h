#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QHash>
#include <QKeyEvent>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWindow>

#include <memory>
#include <utility>

namespace quillon
{

/// Tells the repetitions of a key that is held down from its presses. X11 sends a release and a press of the same moment
/// for each; where the second is not there yet when the toolkit looks at the first, it marks neither. Here such a press
/// gets its mark, and its release does not arrive at all, so that a control sees a press, marked repetitions and one
/// release.
class KeyRepeats : public QObject, public QAbstractNativeEventFilter
{
public:
    explicit KeyRepeats(QObject* parent);
    ~KeyRepeats() override;
    KeyRepeats(const KeyRepeats&) = delete;
    KeyRepeats& operator=(const KeyRepeats&) = delete;

    /// To be shown every event of the application; true when it is not to be delivered.
    bool takes(QObject* receiver, QEvent* event);
    /// Whether a press is a repetition, marked or not.
    bool isRepeat(const QKeyEvent& press) const;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    bool takesPress(QWindow& window, QKeyEvent& press);
    /// Keeps a release back for a moment: the press that makes it a repetition may be on its way.
    void keepBack(QWindow& window, const QKeyEvent& release);
    void deliverRelease();
    void deliver(QWindow& window, QKeyEvent& key);

    std::pair<quint8, quint32> m_lastRelease; // key and moment, as X11 tells them
    QHash<quint32, bool> m_repeats;           // whether the last press of a key was a repetition
    const QEvent* m_own = nullptr;            // what is being delivered from here
    std::unique_ptr<QKeyEvent> m_release;     // that is kept back
    QPointer<QWindow> m_window;               // where it is to be delivered
    QTimer m_patience;
};

} // namespace quillon
