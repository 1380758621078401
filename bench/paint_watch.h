#pragma once

#include <QEvent>
#include <QObject>

namespace quillon::bench
{

/// Tells whether a widget has been painted since this was made.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QObject& widget) { widget.installEventFilter(this); }
    bool painted() const { return m_painted; }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        m_painted = m_painted || event->type() == QEvent::Paint;
        return false;
    }

private:
    bool m_painted = false;
};

} // namespace quillon::bench
