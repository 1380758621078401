#include "ui/widgets/sort_menu.h"

#include "ui/widgets/persons_input.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Two columns of a list may have the same header: then their places tell them apart.
QString captionOf(const HeaderActs& acts, std::size_t place)
{
    const HeaderActs::Column& column = acts.columns[place];
    const auto same = std::count_if(acts.columns.begin(), acts.columns.end(),
                                    [&](const auto& other) { return other.header == column.header; });
    QString caption = u"「"_s + column.header + u"」"_s;
    if (same > 1)
        caption += u"("_s + QString::number(place + 1) + u" 列目) "_s;
    caption += u"で並べ替え"_s;
    if (column.number == acts.sortedColumn)
        caption += u" (昇順)"_s;
    return caption.replace(u"&"_s, u"&&"_s); // a header is text, and no place for access keys
}

} // namespace

void openSortMenu(QWidget& list, const QPoint& position, const HeaderActs& acts)
{
    PersonsInput::ofApplication().composition().confirm();
    auto* menu = new QMenu(&list);
    menu->setObjectName(u"sortMenu"_s);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto* columns = new QActionGroup(menu);
    for (std::size_t place = 0; place < acts.columns.size(); ++place) {
        const int column = acts.columns[place].number;
        QAction* entry = menu->addAction(captionOf(acts, place));
        entry->setActionGroup(columns);
        entry->setCheckable(true);
        entry->setChecked(column == acts.sortedColumn);
        QObject::connect(entry, &QAction::triggered, &list,
                         [sortBy = acts.sortBy, column] { sortBy(column); });
    }
    menu->addSeparator();
    QAction* fit = menu->addAction(u"列の幅を内容に合わせる"_s);
    fit->setShortcut(Qt::CTRL | Qt::Key_Plus);
    fit->setShortcutVisibleInContextMenu(true);
    fit->setShortcutContext(Qt::WidgetShortcut); // told only: the list itself takes the key
    QObject::connect(fit, &QAction::triggered, &list, acts.fitColumns);
    menu->popup(position);
}

} // namespace quillon
