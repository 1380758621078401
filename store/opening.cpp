#include "store/opening.h"

#include "app/base/extract_string.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/main_window_port.h"
#include "store/creation.h"
#include "store/database.h"
#include "store/opened_file.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/rollback_journal.h"
#include "store/windows_of_database.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

// Creating, opening and converting are one operation to the user.
const QString Location = u"OpenDbFile"_s;

<<<<<<< HEAD
/// A file with all that a session holds of one, beside the present one until it is made the current one.
struct OpenedFile {
    OpenedFile(Session& session, const QString& path, const QString& name);
    void makeCurrent(Session& session) const;

    bool wasBrokenOff = false; // in the middle of a write
    std::shared_ptr<Database> database;
    std::shared_ptr<RecordSet> main;
    std::shared_ptr<RecordSet> openApp;
    std::shared_ptr<RecordSet> refFile;
    std::shared_ptr<RecordSet> refDoc;
    std::shared_ptr<RecordSet> link;
    std::shared_ptr<RecordSet> categoryId;
    std::shared_ptr<RecordSet> category;
};

OpenedFile::OpenedFile(Session& session, const QString& path, const QString& name)
{
    MainWindowPort& window = session.mainWindow();
    window.setStatus(1, u"データベース : "_s + name + u" を展開中です。"_s);
    database = Database::inspect(path);
    if (isUnfinished(*database))
        throw Error(Database::emptyFile());
    window.setStatus(1, u"定義データテーブルを展開中です。"_s);
    main = RecordSet::openTable(database, schema::Main());
    openApp = RecordSet::openTable(database, schema::OpenApp());
    window.setStatus(1, u"ファイルデータテーブルを展開中です。"_s);
    refFile = RecordSet::openTable(database, schema::RefFile());
    window.setStatus(1, u"文献データテーブルを展開中です。"_s);
    refDoc = RecordSet::openTable(database, schema::RefDoc());
    window.setStatus(1, u"リンク情報テーブルを展開中です。"_s);
    link = RecordSet::openTable(database, schema::Link());
    wasBrokenOff = sqlite::hasJournal(database->connection().file());
    // Now it is known to be one of ours; another program's file stays as it is, its journal and its log included.
    database->beginUse();
    if (!TableExists(session, *database, schema::Category_ID().name)) {
        session.dialogs.messageBox({.text = u"カテゴリ情報テーブルが存在しませんでした。\r\n"
                                            u"カテゴリテーブルを作成します。"_s,
                                    .title = u"データベースコンバート処理"_s});
        CreateCategoryTables(session, database);
    }
    window.setStatus(1, u"カテゴリ情報テーブルを展開中です。"_s);
    categoryId = RecordSet::openTable(database, schema::Category_ID());
    window.setStatus(1, u"分類情報テーブルを展開中です。"_s);
    category = RecordSet::openTable(database, schema::Category());
    // The tree is built of these: what cannot be read of them fails here, and not when the present database has gone.
    categoryId->forEachRow(
        {0, 1}, [](const RecordSet::Row& row) { return row.text(0).size() + row.text(1).size() >= 0; });
}

void OpenedFile::makeCurrent(Session& session) const
{
    session.OpenDb = database;
    session.RsMain = main;
    session.RsOpenApp = openApp;
    session.RsRefFile = refFile;
    session.RsRefDoc = refDoc;
    session.RsLink = link;
    session.RsCategoryID = categoryId;
    session.RsCategory = category;
    session.MainLastFieldIndex = 2;
    if (session.keeper == nullptr)
        return;
    session.keeper->databaseOpened(*database);
    if (wasBrokenOff)
        session.keeper->databaseWasBrokenOff();
}

/// Opens a file beside the present one. Who keeps copies of it is told when it is damaged.
OpenedFile openFile(Session& session, const QString& path, const QString& name)
{
    try {
        return {session, path, name};
    } catch (const Error& error) {
        if (error.number == errors::NotADatabase && session.keeper != nullptr)
            session.keeper->databaseIsDamaged(path);
        throw;
    }
}

=======
>>>>>>> 6eac084 (store: let a file be opened without a main window)
} // namespace

Opening openDatabase(Session& session, const QString& path)
{
    Opening outcome = Opening::Failed;
    guarded(session.reporting, Location, [&] {
        MainWindowPort& window = session.mainWindow();
        const QString name = ExtractString(session.reporting, path, QDir::separator());
        const auto shown = window.clearDataList();
<<<<<<< HEAD
        const OpenedFile file = openFile(session, path, name);
=======
        window.setStatus(1, u"データベース : "_s + name + u" を展開中です。"_s);
        const OpenedFile file(session, path, [&](const QString& status) { window.setStatus(1, status); });
        // The tree is built of these: what cannot be read of them fails here, and not when the present database has gone.
        file.categoryId->forEachRow(
            {0, 1}, [](const RecordSet::Row& row) { return row.text(0).size() + row.text(1).size() >= 0; });
>>>>>>> 6eac084 (store: let a file be opened without a main window)
        const bool isAnother = !session.OpenDb || !file.database->isFileOf(*session.OpenDb);
        if (isAnother && !CloseDataWindows(session)) {
            shown->showAgain();
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
        // The database has been made, whatever comes of opening it: a failure there is told by the opening itself.
        outcome = openDatabase(session, path);
        if (outcome != Opening::Declined)
            session.dialogs.messageBox({.text = u"Quillon 用のデータベースを作成しました。"_s});
    });
    return outcome;
}

} // namespace quillon
