#include "store/opened_file.h"

#include "app/base/error.h"
#include "app/base/ports/dialogs.h"
#include "store/creation.h"
#include "store/database.h"
#include "store/keeper.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "store/sqlite/rollback_journal.h"
#include "store/write_transaction.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

// Creating, opening and converting are one operation to the user.
const QString LocationOfOpening = u"OpenDbFile"_s;

} // namespace

OpenedFile::OpenedFile(Session& session, const QString& path, const Tell& tell)
{
    database = Database::inspect(path);
    if (isUnfinished(*database))
        throw Error(Database::emptyFile());
    tell(u"定義データテーブルを展開中です。"_s);
    main = RecordSet::openTable(database, schema::Main());
    openApp = RecordSet::openTable(database, schema::OpenApp());
    tell(u"ファイルデータテーブルを展開中です。"_s);
    refFile = RecordSet::openTable(database, schema::RefFile());
    tell(u"文献データテーブルを展開中です。"_s);
    refDoc = RecordSet::openTable(database, schema::RefDoc());
    tell(u"リンク情報テーブルを展開中です。"_s);
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
    tell(u"カテゴリ情報テーブルを展開中です。"_s);
    categoryId = RecordSet::openTable(database, schema::Category_ID());
    tell(u"分類情報テーブルを展開中です。"_s);
    category = RecordSet::openTable(database, schema::Category());
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

bool TableExists(Session& session, Database& database, const QString& name)
{
    bool exists = false;
    guarded(session.reporting, LocationOfOpening, [&] { exists = database.tableExists(name); });
    return exists;
}

void CreateCategoryTables(Session& session, const std::shared_ptr<Database>& database)
{
    guarded(session.reporting, LocationOfOpening, [&] {
        if (!database)
            throw Error(errors::ObjectNotSet);
        // Both or, when the program ends in between, none: only the absence of the first makes a later opening convert.
        inWriteTransaction(*database, [&] {
            database->execute(schema::Category_ID().statement);
            database->execute(schema::Category().statement);
        });
    });
}

} // namespace quillon
