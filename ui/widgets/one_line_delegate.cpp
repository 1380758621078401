#include "ui/widgets/one_line_delegate.h"

#include "ui/widgets/plain_tool_tip.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QPen>
#include <QTextLayout>
#include <QToolTip>

#include <utility>

namespace quillon
{

namespace
{

// No window is so wide; laying out a whole document in a cell would only cost time.
constexpr qsizetype LongestShown = 1000;
constexpr qsizetype LongestTold = 2000; // more would cover the screen

bool breaksTheLine(QChar unit)
{
    return unit.category() == QChar::Other_Control || unit == QChar::LineSeparator ||
           unit == QChar::ParagraphSeparator;
}

QRect placeOfText(const QStyleOptionViewItem& option)
{
    const QStyle& style = option.widget != nullptr ? *option.widget->style() : *QApplication::style();
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    return option.rect.adjusted(margin, 0, -margin, 0);
}

bool hasMoreThanText(const QStyleOptionViewItem& item)
{
    return (item.state & (QStyle::State_Selected | QStyle::State_MouseOver)) != 0;
}

QColor textColor(const QStyleOptionViewItem& item)
{
    const auto group = (item.state & QStyle::State_Enabled) == 0  ? QPalette::Disabled
                       : (item.state & QStyle::State_Active) == 0 ? QPalette::Inactive
                                                                  : QPalette::Active;
    const bool selected = (item.state & QStyle::State_Selected) != 0;
    return item.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
}

} // namespace

OneLineDelegate::OneLineDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QString OneLineDelegate::displayText(const QVariant& value, const QLocale& /*locale*/) const
{
    QString text = value.toString().left(LongestShown);
    for (QChar& unit : text) {
        if (breaksTheLine(unit))
            unit = u' ';
    }
    return text;
}

bool OneLineDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                const QStyleOptionViewItem& option, const QModelIndex& index)
{
    if (event == nullptr || view == nullptr || event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const QRect place = placeOfText(option);
    const qreal width = m_lines.line(displayText(index.data(), option.locale), option.font).width;
    const QRect seen = place.intersected(view->viewport()->rect());
    if (place.left() == seen.left() && width <= seen.width()) {
        QToolTip::hideText();
        return true;
    }
    QToolTip::showText(event->globalPos(), plainToolTip(index.data().toString().left(LongestTold)),
                       view->viewport(), option.rect);
    return true;
}

void OneLineDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    option->index = index;
    option->features |= QStyleOptionViewItem::HasDisplay;
    option->text = displayText(index.data(), option->locale);
}

void OneLineDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const
{
    const QStyle& style = option.widget != nullptr ? *option.widget->style() : *QApplication::style();
    QStyleOptionViewItem item = option;
    // The views frame the current row themselves; the mark of many a style is a veil over its text.
    item.state &= ~QStyle::State_HasFocus;
    // Other styles draw texts in ways of their own.
    const bool plainly = style.inherits("QFusionStyle") && option.direction == Qt::LeftToRight;
    if (!plainly) {
        QStyledItemDelegate::paint(painter, item, index);
        return;
    }
    initStyleOption(&item, index);
    const QString text = std::exchange(item.text, {});
    // The style lays every text out three times to draw it; it draws the rest, where there is any.
    if (hasMoreThanText(item))
        style.drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);
    paintText(*painter, item, text);
}

void OneLineDelegate::paintText(QPainter& painter, const QStyleOptionViewItem& option,
                                const QString& text) const
{
    const QRect place = placeOfText(option);
    if (text.isEmpty() || place.width() <= 0)
        return;
    LaidOutLine* line = &m_lines.line(text, option.font);
    const int top =
        place.top() + place.height() / 2 - int(line->height) / 2; // a whole pixel, as the style has it
    if (line->width > place.width()) {
        if (line->shortenedTo != place.width()) {
            line->shortened = option.fontMetrics.elidedText(text, option.textElideMode, place.width());
            line->shortenedTo = place.width();
        }
        line = &m_lines.line(line->shortened, option.font);
    }
    const QRectF glyphs(place.left(), top, line->width, line->height);
    // Saving a painter and clipping cost as much as the glyphs of a short text.
    const bool fits = line->compact && QRectF(option.rect).contains(glyphs);
    if (!fits) {
        painter.save();
        painter.setClipRect(option.rect, Qt::IntersectClip);
    }
    const QPen penBefore = painter.pen();
    painter.setPen(textColor(option));
    line->layout->draw(&painter, glyphs.topLeft());
    painter.setPen(penBefore);
    if (!fits)
        painter.restore();
}

} // namespace quillon
