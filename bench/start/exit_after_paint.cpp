// Linked to a program, this ends it as soon as its first window has been painted. The program itself stays as it is.
#include <QCoreApplication>
#include <QEvent>
#include <QTimer>

#include <cstdlib>

namespace
{

class FirstPaint : public QObject
{
protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        // One paint event after the other goes to the widgets of a window; after them the event loop goes on.
        if (event->type() == QEvent::Paint)
            QTimer::singleShot(0, [] { std::_Exit(EXIT_SUCCESS); });
        return false;
    }
};

void watchForFirstPaint()
{
    static FirstPaint firstPaint;
    QCoreApplication::instance()->installEventFilter(&firstPaint);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchForFirstPaint)
