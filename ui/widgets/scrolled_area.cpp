#include "ui/widgets/scrolled_area.h"

#include <QApplication>
#include <QEvent>
#include <QLayout>
#include <QScrollBar>

#include <algorithm>

namespace quillon
{

namespace
{

bool takesKeyboard(const QWidget& widget)
{
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.isEnabled() && !widget.isHidden();
}

} // namespace

ScrolledArea::ScrolledArea(QWidget* content, Least least, QWidget* parent)
    : QScrollArea(parent), m_least(least)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    // The toolkit would take the wanted height of whatever breaks lines for the least one.
    setWidgetResizable(false);
    setWidget(content);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        // While a window is destroyed the keyboard goes from one to the other.
        const QWidget* held = widget();
        if (now != nullptr && held != nullptr && held->isAncestorOf(now))
            bringIntoView(*now);
    });
}

QSize ScrolledArea::sizeHint() const
{
    return widget()->sizeHint().expandedTo(leastContent());
}

QSize ScrolledArea::leastContent() const
{
    return widget()->minimumSizeHint().expandedTo(widget()->minimumSize());
}

QSize ScrolledArea::minimumSizeHint() const
{
    constexpr int Lines = 3;
    constexpr int Characters = 8;
    const QSize content = leastContent();
    const int line = fontMetrics().height(); // and about as wide as a full-width character
    return m_least == Least::Content ? content : QSize(Characters * line, Lines * line).boundedTo(content);
}

void ScrolledArea::bringIntoView(QWidget& control)
{
    const QRect place(control.mapTo(widget(), QPoint(0, 0)), control.size());
    const QRect seen(horizontalScrollBar()->value(), verticalScrollBar()->value(), viewport()->width(),
                     viewport()->height());
    // The toolkit would be content with the place where one types.
    if (place.height() <= seen.height())
        verticalScrollBar()->setValue(
            std::clamp(seen.top(), place.bottom() + 1 - seen.height(), place.top()));
    if (place.width() <= seen.width())
        horizontalScrollBar()->setValue(
            std::clamp(seen.left(), place.right() + 1 - seen.width(), place.left()));
    if (place.height() > seen.height() || place.width() > seen.width())
        ensureWidgetVisible(&control, 0, 0);
}

bool ScrolledArea::event(QEvent* event)
{
    const bool handled = QScrollArea::event(event);
    if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::StyleChange) {
        updateGeometry();
        fitContent();
    }
    return handled;
}

void ScrolledArea::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    fitContent();
}

QSize ScrolledArea::neededFor(int width) const
{
    QSize needed = widget()->minimumSizeHint().expandedTo(widget()->minimumSize());
    const QLayout* rows = widget()->layout();
    if (rows != nullptr && rows->hasHeightForWidth())
        needed.setHeight(rows->totalMinimumHeightForWidth(std::max(width, needed.width())));
    return needed;
}

void ScrolledArea::fitContent()
{
    if (widget() == nullptr)
        return;
    QSize room = contentsRect().size();
    QSize needed = neededFor(room.width());
    bool across = false;
    bool down = false;
    // A bar in one direction takes room in the other, and a narrower text is higher.
    for (int pass = 0; pass < 2; ++pass) {
        if (!down && needed.height() > room.height()) {
            down = true;
            room.rwidth() -= verticalScrollBar()->sizeHint().width();
            needed = neededFor(room.width());
        }
        if (!across && needed.width() > room.width()) {
            across = true;
            room.rheight() -= horizontalScrollBar()->sizeHint().height();
        }
    }
    // Told, not left to the toolkit: it changes its mind while the sizes settle.
    setVerticalScrollBarPolicy(down ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(across ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    widget()->resize(room.expandedTo(needed));
    // Where nothing in it takes the keyboard, the keyboard scrolls.
    const auto controls = widget()->findChildren<QWidget*>();
    const bool mustTakeKeyboard =
        (across || down) && std::none_of(controls.begin(), controls.end(),
                                         [](const QWidget* control) { return takesKeyboard(*control); });
    setFocusPolicy(mustTakeKeyboard ? Qt::StrongFocus : Qt::NoFocus);
}

} // namespace quillon
