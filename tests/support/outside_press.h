#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QMenu>
#include <QTest>

namespace quillon::testing
{

/// Presses a button as assistive technology does, past what keeps the keyboard and the mouse from it.
inline void pressFromOutside(QAbstractButton& button)
{
    QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(&button);
    if (told == nullptr || told->actionInterface() == nullptr)
        QFAIL("the button cannot be pressed from outside");
    told->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QTRY_VERIFY(!button.isDown()); // the click comes when it goes up again
}

/// Chooses an entry of a menu in that way.
inline void chooseFromOutside(QMenu& menu, const QAction& entry)
{
    QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(&menu);
    if (told == nullptr)
        QFAIL("the menu cannot be asked");
    for (int child = 0; child < told->childCount(); ++child) {
        QAccessibleInterface* const item = told->child(child);
        if (item != nullptr && item->object() == &entry && item->actionInterface() != nullptr) {
            item->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
            return;
        }
    }
    QFAIL("the entry cannot be chosen from outside");
}

} // namespace quillon::testing
