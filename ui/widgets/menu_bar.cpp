#include "ui/widgets/menu_bar.h"

#include <QAction>
#include <QActionEvent>
#include <QApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>

#include <algorithm>

namespace quillon
{

bool hasAccessKey(const QString& caption, int key)
{
    const QKeySequence mnemonic = QKeySequence::mnemonic(caption);
    return !mnemonic.isEmpty() && mnemonic[0].key() == key;
}

bool MenuBar::hasMenuWith(int key) const
{
    const auto menus = actions();
    return std::any_of(menus.begin(), menus.end(), [key](const QAction* menu) {
        return menu->isVisible() && hasAccessKey(menu->text(), key);
    });
}

QAction* MenuBar::nextMenuWith(int key) const
{
    QAction* first = nullptr;
    const QAction* const last = lastOpened();
    bool afterLast = false;
    const auto menus = actions();
    for (QAction* menu : menus) {
        if (menu->isEnabled() && menu->isVisible() && hasAccessKey(menu->text(), key)) {
            if (afterLast)
                return menu;
            if (first == nullptr)
                first = menu;
        }
        afterLast = afterLast || menu == last;
    }
    return first;
}

const QAction* MenuBar::lastOpened() const
{
    if (m_closedByAlt || (m_opened != nullptr && m_opened == activeAction()))
        return m_opened;
    return QApplication::activePopupWidget() != nullptr ? activeAction() : nullptr;
}

void MenuBar::followAlt(bool pressed)
{
    if (pressed && m_closedByAlt)
        return; // told by more than one control
    m_closedByAlt = pressed && QApplication::activePopupWidget() != nullptr && activeAction() != nullptr;
    if (m_closedByAlt)
        m_opened = activeAction();
    else if (pressed && !hasFocus())
        m_opened = nullptr; // the bar becomes active anew
}

void MenuBar::open(QAction* menu)
{
    m_opened = menu;
    m_closedByAlt = false;
    setActiveAction(menu);
    const auto entries = menu->menu() != nullptr ? menu->menu()->actions() : QList<QAction*>();
    for (QAction* entry : entries) {
        if (entry->isEnabled() && entry->isVisible() && !entry->isSeparator()) {
            menu->menu()->setActiveAction(entry);
            return;
        }
    }
}

void MenuBar::actionEvent(QActionEvent* event)
{
    const QAction* menu = event->action();
    const Look look{menu->text(), menu->isVisible()};
    if (event->type() == QEvent::ActionChanged && m_looks.value(menu) == look) {
        update();
        return;
    }
    if (event->type() == QEvent::ActionRemoved) {
        m_looks.remove(menu);
        if (m_opened == menu)
            m_opened = nullptr;
    } else {
        m_looks.insert(menu, look);
    }
    QMenuBar::actionEvent(event);
}

void MenuBar::keyPressEvent(QKeyEvent* event)
{
    const bool characterAlone = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (characterAlone && QApplication::activePopupWidget() == nullptr && hasMenuWith(event->key())) {
        if (QAction* menu = nextMenuWith(event->key()))
            open(menu);
        event->accept();
        return;
    }
    QMenuBar::keyPressEvent(event);
}

} // namespace quillon
