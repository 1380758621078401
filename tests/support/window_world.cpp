#include "tests/support/window_world.h"

#include "store/database.h"
#include "store/schema.h"
#include "tests/support/test_world.h"
#include "ui/main/frmMainMenu.h"

#include <QAction>
#include <QCoreApplication>
#include <QEvent>
#include <QMenu>

#include <algorithm>

namespace quillon::testing
{

WindowWorld::WindowWorld(const QString& manualFolder)
    : program({.dialogs = dialogs,
               .eventLog = eventLog,
               .clock = clock,
               .desktop = desktop,
               .files = files,
               .manualFolder = manualFolder},
              folder.path())
{
    program.setEnd([this] { ++ends; });
    // No box may stand open in the middle of a pass over the file or of a write.
    dialogs.complainWhile(
        [this] { return program.session().OpenDb && program.session().OpenDb->connection().holdsLock(); });
    program.mainWindow().showModeless();
    processEvents();
}

WindowWorld::~WindowWorld() = default;

// NOLINTNEXTLINE(readability-make-member-function-const): the world has a file more afterwards
QString WindowWorld::createDatabase(const QString& name)
{
    QString path = folder.filePath(name);
    const auto database = Database::create(path);
    for (const TableSchema* table : schema::all())
        database->execute(table->statement);
    return path;
}

void WindowWorld::open(const QString& path)
{
    mainWindow().openChosenFile(path);
    processEvents();
}

void WindowWorld::addRow(const std::shared_ptr<RecordSet>& recordSet, const QStringList& fields)
{
    TestWorld::addRow(recordSet, fields);
}

QStringList WindowWorld::rowsOf(const std::shared_ptr<RecordSet>& recordSet)
{
    return TestWorld::rowsOf(recordSet);
}

LoadedWindow* WindowWorld::loadedWindow(const QString& designName, int n)
{
    for (LoadedWindow* loaded : program.windows().loaded()) {
        if (loaded->windowName() == designName && n-- == 0)
            return loaded;
    }
    return nullptr;
}

int WindowWorld::windowCount(const QString& designName)
{
    return static_cast<int>(loadedNames().count(designName));
}

QStringList WindowWorld::loadedNames()
{
    QStringList names;
    for (const LoadedWindow* loaded : program.windows().loaded())
        names << loaded->windowName();
    return names;
}

QAction* WindowWorld::entry(QWidget& window, const QString& designName)
{
    if (auto* action = window.findChild<QAction*>(designName))
        return action;
    if (const auto* menu = window.findChild<QMenu*>(designName))
        return menu->menuAction();
    return nullptr;
}

bool WindowWorld::choose(QWidget& window, const QString& designName)
{
    QAction* action = entry(window, designName);
    if (action == nullptr || !action->isVisible() || !action->isEnabled())
        return false;
    // An entry of a disabled menu is out of reach, too.
    for (const QObject* parent = action->parent(); parent != nullptr; parent = parent->parent()) {
        const auto* menu = qobject_cast<const QMenu*>(parent);
        if (menu != nullptr && !menu->menuAction()->isEnabled())
            return false;
    }
    action->trigger();
    processEvents();
    return true;
}

void WindowWorld::processEvents()
{
    // Deferred deletions are not part of processEvents outside a running event loop.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

} // namespace quillon::testing
