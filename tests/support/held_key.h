#pragma once

#include <QCoreApplication>
#include <QKeyEvent>
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

} // namespace quillon::testing
