#pragma once

#include <QHash>
#include <QMenuBar>
#include <QString>

#include <utility>

namespace quillon
{

/// Whether the access key of a caption (the character after "&") is this key.
bool hasAccessKey(const QString& caption, int key);

/// A menu bar whose disabled menus take no access key. Of several menus with one key the first enabled one opens, and
/// the next when the key is pressed again.
/// It lays its menus out again only when a caption or what is visible has changed: the base class does it for every menu
/// that is enabled or disabled, too, and that takes longer than all else in a change of mode.
class MenuBar : public QMenuBar
{
public:
    using QMenuBar::QMenuBar;

    /// Whether a menu, enabled or not, has this access key.
    bool hasMenuWith(int key) const;
    /// The enabled menu that an access key opens: the first one, or the next after the one that is open or that the
    /// key has opened before; null when there is none.
    QAction* nextMenuWith(int key) const;
    /// Opens a menu on its first enabled entry.
    void open(QAction* menu);
    /// Alt was pressed or released. The toolkit closes an open menu when it is pressed, but this may be the beginning
    /// of the access key pressed again.
    void followAlt(bool pressed);

protected:
    void actionEvent(QActionEvent* event) override;
    /// While the bar has the focus the character alone opens a menu.
    void keyPressEvent(QKeyEvent* event) override;

private:
    using Look = std::pair<QString, bool>;

    /// The menu after which an access key goes on; null when the bar is not active.
    const QAction* lastOpened() const;

    const QAction* m_opened = nullptr; // by its access key, the last time
    bool m_closedByAlt = false;        // and Alt is still down
    QHash<const QAction*, Look> m_looks;
};

} // namespace quillon
