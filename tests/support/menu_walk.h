#pragma once

#include "tests/support/window_world.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include <functional>
#include <optional>
#include <vector>

namespace quillon::testing
{

/// A menu entry in one state of its window: whether it can be chosen, and what comes of it then.
struct WalkedEntry {
    QString name;
    bool usable = false;
    /// Writes down the boxes that come.
    std::function<void()> expect = {};
    /// The windows that are loaded afterwards; nothing when there are the same as before.
    std::optional<QStringList> windows = std::nullopt;
    /// Looks at whatever else has come of it.
    std::function<void()> check = {};
};

/// Entries that cannot be chosen, or of which nothing comes.
inline std::vector<WalkedEntry> entries(const QStringList& names, bool usable)
{
    std::vector<WalkedEntry> walked;
    for (const QString& name : names)
        walked.push_back({.name = name, .usable = usable});
    return walked;
}

/// Puts entries behind others.
inline std::vector<WalkedEntry> operator+(std::vector<WalkedEntry> walked,
                                          const std::vector<WalkedEntry>& further)
{
    walked.insert(walked.end(), further.begin(), further.end());
    return walked;
}

/// The names of all menus and entries of a window, in order, without separators.
inline QStringList namesOfEntries(const QWidget& window)
{
    QStringList names;
    const std::function<void(const QList<QAction*>&)> collect = [&](const QList<QAction*>& actions) {
        for (const QAction* action : actions) {
            if (action->isSeparator())
                continue;
            names << action->objectName();
            if (const QMenu* menu = action->menu())
                collect(menu->actions());
        }
    };
    if (const auto* bar = window.findChild<QMenuBar*>())
        collect(bar->actions());
    return names;
}

inline QStringList namesOf(const std::vector<WalkedEntry>& walked)
{
    QStringList names;
    for (const WalkedEntry& entry : walked)
        names << entry.name;
    return names;
}

/// Whether a menu can be opened: it and the menus it lies in are enabled.
inline bool opens(const QAction& menu)
{
    for (const QObject* parent = menu.parent(); parent != nullptr; parent = parent->parent()) {
        const auto* outer = qobject_cast<const QMenu*>(parent);
        if (outer != nullptr && !outer->menuAction()->isEnabled())
            return false;
    }
    return menu.isEnabled();
}

/// Chooses an entry and looks at what comes of it. A menu is only looked at: it opens, or it does not.
inline void walk(WindowWorld& world, QWidget& window, const WalkedEntry& walked)
{
    const QAction* entry = WindowWorld::entry(window, walked.name);
    QVERIFY(entry != nullptr);
    QVERIFY(entry->isVisible()); // disabled, never hidden
    if (entry->menu() != nullptr) {
        QCOMPARE(opens(*entry), walked.usable);
        return;
    }
    const QStringList before = world.loadedNames();
    if (walked.expect)
        walked.expect();
    QCOMPARE(WindowWorld::choose(window, walked.name), walked.usable);
    QCOMPARE(world.loadedNames(), walked.windows.value_or(before));
    QCOMPARE(world.dialogs.takeComplaints(), QStringList());
    if (walked.check)
        walked.check();
}

} // namespace quillon::testing

Q_DECLARE_METATYPE(quillon::testing::WalkedEntry)
