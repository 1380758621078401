#include "ui/widgets/accessible_rows.h"

#include "ui/widgets/may_act.h"

#include <QAbstractItemView>

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
    const QAbstractItemView& view = viewOfRows();
    return view.isEnabled() && mayActOn(view);
}

} // namespace quillon
