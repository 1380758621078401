#include "ui/widgets/button_row.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace quillon
{

ButtonRow::~ButtonRow()
{
    qDeleteAll(m_items);
}

void ButtonRow::addLeading(QWidget* widget)
{
    addWidget(widget);
    ++m_leading;
}

void ButtonRow::addItem(QLayoutItem* item)
{
    m_items.append(item);
    invalidate();
}

QLayoutItem* ButtonRow::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    if (index < m_leading)
        --m_leading;
    return m_items.takeAt(index);
}

int ButtonRow::gap() const
{
    constexpr int Usual = 6; // where the style leaves it to the kinds of the controls
    return spacing() >= 0 ? spacing() : Usual;
}

QSize ButtonRow::sizeHint() const
{
    QSize size(0, 0);
    for (const QLayoutItem* item : m_items) {
        if (item->isEmpty())
            continue;
        const QSize one = item->sizeHint();
        size = {size.width() + one.width() + (size.isNull() ? 0 : gap()),
                std::max(size.height(), one.height())};
    }
    return size.grownBy(contentsMargins());
}

QSize ButtonRow::minimumSize() const
{
    QSize size(0, 0);
    for (const QLayoutItem* item : m_items) {
        if (!item->isEmpty())
            size = size.expandedTo(item->sizeHint());
    }
    return size.grownBy(contentsMargins());
}

int ButtonRow::widthOf(int item, int width) const
{
    return std::min(m_items[item]->sizeHint().width(), width);
}

QList<ButtonRow::Line> ButtonRow::linesFor(int width) const
{
    QList<Line> lines;
    int left = 0;
    for (int item = 0; item < count(); ++item) {
        if (m_items[item]->isEmpty())
            continue;
        const int needed = widthOf(item, width) + gap();
        if (lines.isEmpty() || needed > left) {
            lines.append(Line());
            left = width + gap();
        }
        lines.last().append(item);
        left -= needed;
    }
    return lines;
}

int ButtonRow::heightOf(const Line& line) const
{
    int height = 0;
    for (const int item : line)
        height = std::max(height, m_items[item]->sizeHint().height());
    return height;
}

int ButtonRow::heightForWidth(int width) const
{
    const QMargins around = contentsMargins();
    int height = 0;
    for (const Line& line : linesFor(width - around.left() - around.right()))
        height += heightOf(line) + (height > 0 ? gap() : 0);
    return height + around.top() + around.bottom();
}

void ButtonRow::setGeometry(const QRect& place)
{
    QLayout::setGeometry(place);
    const QRect room = place.marginsRemoved(contentsMargins());
    int top = room.top();
    for (const Line& line : linesFor(room.width())) {
        const int height = heightOf(line);
        int left = room.left();
        int right = room.left() + room.width();
        const auto put = [&](int item, int from) {
            const int width = widthOf(item, room.width());
            QRect inside(from, top, width, std::min(height, m_items[item]->sizeHint().height()));
            inside.moveTop(top + (height - inside.height()) / 2);
            m_items[item]->setGeometry(QStyle::visualRect(parentWidget()->layoutDirection(), room, inside));
        };
        for (const int item : line) {
            if (item < m_leading) {
                put(item, left);
                left += widthOf(item, room.width()) + gap();
            }
        }
        for (qsizetype index = line.size() - 1; index >= 0; --index) {
            if (const int item = line[index]; item >= m_leading) {
                right -= widthOf(item, room.width());
                put(item, right);
                right -= gap();
            }
        }
        top += height + gap();
    }
}

} // namespace quillon
