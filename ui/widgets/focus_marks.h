#pragma once

class QAbstractItemView;
class QPainter;
class QRect;
class QStyleOptionViewItem;

namespace quillon
{

/// Lets a list or tree show what is selected in other colours while it has not got the keyboard. For its
/// `initViewItemOption`.
void showFocus(QStyleOptionViewItem& option, const QAbstractItemView& view);

/// Frames the current row of a list or tree that has the keyboard. For the end of its `paintEvent`.
/// `row`: its place in the viewport, beyond the edges where the columns reach beyond them.
void frameCurrentRow(QAbstractItemView& view, const QRect& row);

/// Frames an item on which something would be dropped, which must not look like one that is selected.
void frameDropTarget(QPainter& painter, const QStyleOptionViewItem& item);

} // namespace quillon
