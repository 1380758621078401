#include "ui/widgets/access_key.h"

#include "ui/widgets/menu_bar.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>

#include <algorithm>

namespace quillon
{

namespace
{

MenuBar* menuBarOf(const QWidget& window)
{
    const auto* mainWindow = qobject_cast<const QMainWindow*>(&window);
    return mainWindow != nullptr ? dynamic_cast<MenuBar*>(mainWindow->menuWidget()) : nullptr;
}

/// Whether an entry of the menu that is open has a key, or a menu is open that is none of the bar.
bool openMenuTakes(const MenuBar& bar, int key)
{
    const auto* open = qobject_cast<const QMenu*>(QApplication::activePopupWidget());
    if (QApplication::activePopupWidget() == nullptr)
        return false;
    if (open == nullptr || bar.activeAction() == nullptr)
        return true;
    const auto entries = open->actions();
    return std::any_of(entries.begin(), entries.end(), [key](const QAction* entry) {
        return entry->isEnabled() && entry->isVisible() && hasAccessKey(entry->text(), key);
    });
}

} // namespace

bool isAccessKeyOfMenus(const QWidget& window, const QKeyEvent& key)
{
    // A key of the number pad and a second keyboard layout make no difference.
    if ((key.modifiers() & ~(Qt::KeypadModifier | Qt::GroupSwitchModifier)) != Qt::AltModifier)
        return false;
    const MenuBar* bar = menuBarOf(window);
    return bar != nullptr && bar->isVisible() && bar->hasMenuWith(key.key()) &&
           !openMenuTakes(*bar, key.key());
}

void followAlt(const QWidget& window, const QKeyEvent& alt)
{
    if (MenuBar* bar = menuBarOf(window); bar != nullptr && !alt.isAutoRepeat())
        bar->followAlt(alt.type() == QEvent::KeyPress);
}

void useAccessKey(QWidget& window, const QKeyEvent& key)
{
    MenuBar* bar = menuBarOf(window);
    if (QAction* menu = bar->nextMenuWith(key.key())) {
        bar->open(menu);
        return;
    }
    const auto buttons = window.findChildren<QAbstractButton*>();
    for (QAbstractButton* button : buttons) {
        if (button->isEnabled() && button->isVisible() && hasAccessKey(button->text(), key.key())) {
            button->click();
            return;
        }
    }
}

} // namespace quillon
