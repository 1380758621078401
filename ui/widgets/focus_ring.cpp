#include "ui/widgets/focus_ring.h"

#include "ui/widgets/focus_colours.h"

#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QMenuBar>
#include <QPainter>
#include <QRegion>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int Width = 2;

/// The control that the person sees, where the keyboard goes to a part of it.
QWidget* wholeControl(QWidget* focused)
{
    QWidget* const parent = focused->parentWidget();
    const bool isPart =
        qobject_cast<QComboBox*>(parent) != nullptr || qobject_cast<QAbstractSpinBox*>(parent) != nullptr;
    return isPart ? parent : focused;
}

/// A window as a whole has no place to show; menus show theirs themselves.
bool isControlInWindow(const QWidget& widget)
{
    const Qt::WindowType type = widget.window()->windowType();
    return !widget.isWindow() && type != Qt::Popup && type != Qt::ToolTip &&
           qobject_cast<const QMenuBar*>(&widget) == nullptr;
}

bool mayMoveIt(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide:
        return true;
    default:
        return false;
    }
}

} // namespace

void FocusRing::followFocus()
{
    static QPointer<QApplication> followed;
    if (followed == qApp)
        return;
    followed = qApp;
    QObject::connect(qApp, &QApplication::focusChanged, qApp, [](QWidget*, QWidget* now) { goTo(now); });
}

void FocusRing::goTo(QWidget* control)
{
    static QPointer<FocusRing> shown;
    if (!shown.isNull()) {
        shown->hide();
        shown->m_control.clear();
        shown->deleteLater();
        shown.clear();
    }
    if (control != nullptr && isControlInWindow(*control))
        shown = new FocusRing(*wholeControl(control)); // its window deletes it, if nobody does before
}

FocusRing::FocusRing(QWidget& control) : QFocusFrame(control.window()), m_control(&control)
{
    setObjectName(u"focusRing"_s);
    for (QWidget* widget = &control; widget != parentWidget(); widget = widget->parentWidget())
        widget->installEventFilter(this);
    parentWidget()->installEventFilter(this);
    place();
}

void FocusRing::place()
{
    QWidget* const window = parentWidget();
    const bool inWindow = !m_control.isNull() && m_control->window() == window && m_control->isVisible();
    if (!inWindow) {
        hide();
        return;
    }
    const auto inItsPlace = [window](const QWidget& widget) {
        return QRect(widget.mapTo(window, QPoint()), widget.size());
    };
    QRect room = window->rect();
    for (QWidget* widget = m_control->parentWidget(); widget != window; widget = widget->parentWidget()) {
        const auto* area = qobject_cast<QAbstractScrollArea*>(widget->parentWidget());
        if (area != nullptr && area->viewport() == widget)
            room &= inItsPlace(*widget); // what is scrolled away is not in sight
    }
    const QRect outside = inItsPlace(*m_control).adjusted(-Width, -Width, Width, Width) & room;
    if (outside.isEmpty()) {
        hide();
        return;
    }
    setGeometry(outside);
    // What lies inside is painted and scrolled as if there were no ring.
    setMask(QRegion(rect()) - QRegion(rect().adjusted(Width, Width, -Width, -Width)));
    raise();
    show();
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    if (mayMoveIt(*event))
        place();
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the frame of the toolkit would go to places of its own
    return QWidget::eventFilter(watched, event);
}

void FocusRing::paintEvent(QPaintEvent* /*event*/)
{
    QPainter(this).fillRect(rect(), focusColour(palette()));
}

} // namespace quillon
