#include "store/opening.h"

#include "app/base/extract_string.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/main_window_port.h"
#include "store/creation.h"
#include "store/database.h"
#include "store/keeper.h"
#include "store/opened_file.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/windows_of_database.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

// Creating, opening and converting are one operation to the user.
const QString Location = u"OpenDbFile"_s;

/// Opens a file beside the present one. Who keeps copies of it is told when it is damaged.
OpenedFile openFile(Session& session, const QString& path, const OpenedFile::Tell& tell)
{
    try {
        OpenedFile file(session, path, tell);
        // The tree is built of these: what cannot be read of them fails here, and not when the present database has gone.
        file.categoryId->forEachRow(
            {0, 1}, [](const RecordSet::Row& row) { return row.text(0).size() + row.text(1).size() >= 0; });
        return file;
    } catch (const Error& error) {
        if (error.number == errors::NotADatabase && session.keeper != nullptr)
            session.keeper->databaseIsDamaged(path);
        throw;
    }
}

/// Closes the windows of the present database; when one stays, its list is there again.
bool closeDataWindows(Session& session, MainWindowPort::Shown& shown)
{
    bool closed = false;
    try {
        closed = CloseDataWindows(session);
    } catch (...) {
        shown.showAgain();
        throw;
    }
    if (!closed)
        shown.showAgain();
    return closed;
}

} // namespace

Opening openDatabase(Session& session, const QString& path)
{
    Opening outcome = Opening::Failed;
    guarded(session.reporting, Location, [&] {
        MainWindowPort& window = session.mainWindow();
        const QString name =
            ExtractString(session.reporting, QDir::toNativeSeparators(path), QDir::separator());
        const auto shown = window.clearDataList();
        window.setStatus(1, u"データベース : "_s + name + u" を展開中です。"_s);
        const OpenedFile file =
            openFile(session, path, [&](const QString& status) { window.setStatus(1, status); });
        const bool isAnother = !session.OpenDb || !file.database->isFileOf(*session.OpenDb);
        if (isAnother && !closeDataWindows(session, *shown)) {
            outcome = Opening::Declined;
            return;
        }
        file.makeCurrent(session);
        if (isAnother) {
            // What was to be linked is a datum of the other file.
            session.LinkSourceMode = false;
            session.LinkSourceForm = nullptr;
            closeListsOfData(session);
        }
        window.enableDatabaseMenus();
        window.setStatus(1, u"データベース ("_s + name + u")が展開されています｡ "_s); // sic: ｡ and the blank
        window.rebuildCategoryTree();
        outcome = Opening::Opened;
    });
    return outcome;
}

bool OpenDbFile(Session& session, const QString& path)
{
    return openDatabase(session, path) == Opening::Opened;
}

Opening CreateDbFile(Session& session, const QString& path)
{
    Opening outcome = Opening::Failed;
    guarded(session.reporting, Location, [&] {
        createDatabaseFile(path);
        if (session.keeper != nullptr)
            session.keeper->databaseCreated(path);
        // The database has been made, whatever comes of opening it: a failure there is told by the opening itself.
        outcome = openDatabase(session, path);
        if (outcome != Opening::Declined)
            session.dialogs.messageBox({.text = u"Quillon 用のデータベースを作成しました。"_s});
    });
    return outcome;
}

} // namespace quillon
