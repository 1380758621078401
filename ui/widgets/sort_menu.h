#pragma once

#include <QString>

#include <functional>
#include <vector>

class QPoint;
class QWidget;

namespace quillon
{

/// What the header of a list does for a mouse.
struct HeaderActs {
    struct Column {
        int number = 0;
        QString header;
    };
    std::vector<Column> columns; // that are shown, from left to right
    int sortedColumn = -1;       // its number, -1 for none
    std::function<void(int)> sortBy;
    std::function<void()> fitColumns;
};

/// Opens a menu with it. `position` is global.
void openSortMenu(QWidget& list, const QPoint& position, const HeaderActs& acts);

} // namespace quillon
