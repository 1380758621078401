#include "ui/main/pane_splitter.h"

#include "ui/widgets/may_act.h"

#include <QKeyEvent>
#include <QSignalBlocker>
#include <QWheelEvent>

namespace quillon
{

PaneSplitter::PaneSplitter(QWidget* parent) : QAbstractSlider(parent)
{
    constexpr int Step = 2;
    constexpr int Page = 10;
    setOrientation(Qt::Horizontal);
    setRange(0, 100);
    setSingleStep(Step);
    setPageStep(Page);
    connect(this, &QAbstractSlider::valueChanged, this, [this](int percent) {
        if (mayActOn(*this))
            Q_EMIT moveWanted(percent);
        else
            standAt(m_percent, minimum(), maximum());
    });
}

void PaneSplitter::standAt(int percent, int least, int most)
{
    const QSignalBlocker noWish(this);
    setRange(least, most);
    setValue(percent);
    m_percent = value();
}

void PaneSplitter::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Q_EMIT left();
        event->accept();
        return;
    case Qt::Key_Escape:
        if (event->modifiers() == Qt::NoModifier) {
            Q_EMIT left();
            event->accept();
            return;
        }
        break;
    default:
        break;
    }
    QAbstractSlider::keyPressEvent(event);
}

void PaneSplitter::wheelEvent(QWheelEvent* event)
{
    event->ignore(); // it is a handle of a few pixels, over which the wheel comes by chance
}

} // namespace quillon
