#include "ui/widgets/one_line_delegate.h"

#include <QApplication>
#include <QPainter>

namespace quillon
{

namespace
{

// No window is so wide; laying out a whole document in a cell would only cost time.
constexpr qsizetype LongestShown = 1000;

constexpr int TextsKept = 2000; // those of a few screens

bool breaksTheLine(QChar unit)
{
    return unit.category() == QChar::Other_Control || unit == QChar::LineSeparator ||
           unit == QChar::ParagraphSeparator;
}

} // namespace

OneLineDelegate::OneLineDelegate(QObject* parent) : QStyledItemDelegate(parent), m_laidOut(TextsKept) {}

QString OneLineDelegate::displayText(const QVariant& value, const QLocale& /*locale*/) const
{
    QString text = value.toString().left(LongestShown);
    for (QChar& unit : text) {
        if (breaksTheLine(unit))
            unit = u' ';
    }
    return text;
}

void OneLineDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const
{
    const QStyle& style = option.widget != nullptr ? *option.widget->style() : *QApplication::style();
    // Other styles draw texts in ways of their own.
    if (!style.inherits("QFusionStyle")) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    // The style lays every text out three times to draw it; it draws the rest.
    QStyleOptionViewItem background = item;
    background.text.clear();
    style.drawControl(QStyle::CE_ItemViewItem, &background, painter, item.widget);
    paintText(*painter, item);
}

void OneLineDelegate::paintText(QPainter& painter, const QStyleOptionViewItem& option) const
{
    const QStyle& style = option.widget != nullptr ? *option.widget->style() : *QApplication::style();
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    const QRect place = option.rect.adjusted(margin, 0, -margin, 0);
    if (option.text.isEmpty() || place.width() <= 0)
        return;
    const QStaticText* line = &laidOut(option.text, option.font);
    if (line->size().width() > place.width())
        line = &laidOut(option.fontMetrics.elidedText(option.text, option.textElideMode, place.width()),
                        option.font);
    const auto group = (option.state & QStyle::State_Enabled) == 0  ? QPalette::Disabled
                       : (option.state & QStyle::State_Active) == 0 ? QPalette::Inactive
                                                                    : QPalette::Active;
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    painter.save();
    painter.setClipRect(option.rect, Qt::IntersectClip);
    painter.setFont(option.font);
    painter.setPen(option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));
    const qreal height = option.fontMetrics.height();
    const qreal left =
        option.direction == Qt::RightToLeft ? place.right() + 1 - line->size().width() : place.left();
    painter.drawStaticText(QPointF(left, place.top() + (place.height() - height) / 2), *line);
    painter.restore();
}

const QStaticText& OneLineDelegate::laidOut(const QString& text, const QFont& font) const
{
    if (font != m_font) {
        m_laidOut.clear();
        m_font = font;
    }
    QStaticText* line = m_laidOut.object(text);
    if (line == nullptr) {
        line = new QStaticText(text);
        line->setTextFormat(Qt::PlainText);
        line->setPerformanceHint(QStaticText::ModerateCaching);
        line->prepare({}, font);
        m_laidOut.insert(text, line);
    }
    return *line;
}

} // namespace quillon
