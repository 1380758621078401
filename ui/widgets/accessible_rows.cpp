#include "ui/widgets/accessible_rows.h"

#include <QAbstractItemView>
#include <QApplication>

namespace quillon
{

int AccessibleRows::shownColumn(int modelColumn) const
{
    for (int column = 0; column < shownColumnCount(); ++column) {
        if (this->modelColumn(column) == modelColumn)
            return column;
    }
    return -1;
}

bool AccessibleRows::canBeActedOn()
{
    const QWidget* answeredFirst = QApplication::activeModalWidget();
    const QAbstractItemView& view = viewOfRows();
    return view.isEnabled() && (answeredFirst == nullptr || answeredFirst->isAncestorOf(&view));
}

} // namespace quillon
