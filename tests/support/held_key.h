#pragma once

#include <QCoreApplication>
#include <QKeyEvent>
#include <QTest>
#include <QWidget>

namespace quillon::testing
{

/// A key that has been held down elsewhere repeats here, as the window system tells it.
inline void repeatKey(QWidget& control, int key)
{
    for (const QEvent::Type type : {QEvent::KeyRelease, QEvent::KeyPress}) {
        QKeyEvent event(type, key, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(&control, &event);
    }
}

/// A key that is held so long that it repeats.
inline void holdKey(QWidget& control, int key)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&control, &press);
    for (int time = 0; time < 3; ++time)
        repeatKey(control, key);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&control, &release);
}

/// A key that repeats in a window, where shortcuts see it first.
inline void repeatKeyInWindow(QWidget& window, int key, Qt::KeyboardModifiers modifiers = {})
{
    QTest::simulateEvent(window.windowHandle(), true, key, modifiers, {}, true);
}

} // namespace quillon::testing
