#include "ui/widgets/focus_marks.h"

#include "ui/widgets/focus_colours.h"

#include <QAbstractItemView>
#include <QItemSelectionModel>
#include <QPainter>
#include <QRegion>
#include <QStyleOptionViewItem>

namespace quillon
{

void showFocus(QStyleOptionViewItem& option, const QAbstractItemView& view)
{
    if (view.hasFocus())
        return;
    const SelectionColours resting = restingSelection(option.palette);
    option.state &= ~QStyle::State_Active;
    option.palette.setColor(QPalette::Inactive, QPalette::Highlight, resting.background);
    option.palette.setColor(QPalette::Inactive, QPalette::HighlightedText, resting.text);
}

void frameCurrentRow(QAbstractItemView& view, const QRect& row)
{
    const QModelIndex current = view.currentIndex();
    if (!view.hasFocus() || !current.isValid() || row.isEmpty())
        return;
    QPainter painter(view.viewport());
    const bool selected = view.selectionModel()->isSelected(current);
    painter.setPen(
        frameColour(view.palette(), view.palette().color(selected ? QPalette::Highlight : QPalette::Base)));
    painter.drawRect(row.adjusted(0, 0, -1, -1));
}

void frameDropTarget(QPainter& painter, const QStyleOptionViewItem& item)
{
    constexpr int Width = 2;
    const bool selected = item.state.testFlag(QStyle::State_Selected);
    const auto group = item.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    const QColor background = item.palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
    const QRegion frame = QRegion(item.rect) - QRegion(item.rect.adjusted(Width, Width, -Width, -Width));
    for (const QRect& side : frame)
        painter.fillRect(side, frameColour(item.palette, background));
}

} // namespace quillon
