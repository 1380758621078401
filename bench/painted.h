#pragma once

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QSet>

namespace quillon::bench
{

/// Notes which widgets are painted, those that do not exist yet as well.
class Painted : public QObject
{
public:
    Painted() { QCoreApplication::instance()->installEventFilter(this); }
    void forget() { m_widgets.clear(); }
    /// Whether this widget, or the inside of this list, has been painted since.
    bool contains(const QWidget& widget) const
    {
        const auto* area = qobject_cast<const QAbstractScrollArea*>(&widget);
        return m_widgets.contains(area != nullptr ? area->viewport() : &widget);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            m_widgets.insert(watched);
        return false;
    }

private:
    QSet<const QObject*> m_widgets;
};

} // namespace quillon::bench
