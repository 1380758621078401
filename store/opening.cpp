#include "store/opening.h"

#include "app/base/extract_string.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/main_window_port.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "store/write_transaction.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

// Creating, opening and converting are one operation to the user.
const QString Location = u"OpenDbFile"_s;

} // namespace

bool OpenDbFile(Session& session, const QString& path)
{
    bool opened = false;
    guarded(session.reporting, Location, [&] {
        MainWindowPort& window = session.mainWindow();
        const QString name = ExtractString(session.reporting, path, QDir::separator());
        window.clearDataList();
        window.setStatus(1, u"データベース : "_s + name + u" を展開中です。"_s);
        session.OpenDb = Database::inspect(path);
        window.setStatus(1, u"定義データテーブルを展開中です。"_s);
        session.RsMain = RecordSet::openTable(session.OpenDb, schema::Main());
        session.RsOpenApp = RecordSet::openTable(session.OpenDb, schema::OpenApp());
        window.setStatus(1, u"ファイルデータテーブルを展開中です。"_s);
        session.RsRefFile = RecordSet::openTable(session.OpenDb, schema::RefFile());
        window.setStatus(1, u"文献データテーブルを展開中です。"_s);
        session.RsRefDoc = RecordSet::openTable(session.OpenDb, schema::RefDoc());
        window.setStatus(1, u"リンク情報テーブルを展開中です。"_s);
        session.RsLink = RecordSet::openTable(session.OpenDb, schema::Link());
        // Now it is known to be one of ours; another program's file stays as it is, its journal and its log included.
        session.OpenDb->beginUse();
        if (!TableExists(session, *session.OpenDb, u"Category_ID"_s)) {
            session.dialogs.messageBox({.text = u"カテゴリ情報テーブルが存在しませんでした。\r\n"
                                                u"カテゴリテーブルを作成します。"_s,
                                        .title = u"データベースコンバート処理"_s});
            CreateCategoryTables(session);
        }
        window.setStatus(1, u"カテゴリ情報テーブルを展開中です。"_s);
        session.RsCategoryID = RecordSet::openTable(session.OpenDb, schema::Category_ID());
        window.setStatus(1, u"分類情報テーブルを展開中です。"_s);
        session.RsCategory = RecordSet::openTable(session.OpenDb, schema::Category());
        session.MainLastFieldIndex = 2;
        window.enableDatabaseMenus();
        window.setStatus(1, u"データベース ("_s + name + u")が展開されています｡ "_s); // sic: ｡ and the blank
        window.rebuildCategoryTree();
        opened = true;
    });
    return opened;
}

void CreateDbFile(Session& session, const QString& path)
{
    guarded(session.reporting, Location, [&] {
        {
            const auto database = Database::create(path);
            for (const TableSchema* table : schema::all())
                database->execute(table->statement);
        }
        // The database has been made, whatever comes of opening it: a failure there is told by the opening itself.
        OpenDbFile(session, path);
        session.dialogs.messageBox({.text = u"Quillon 用のデータベースを作成しました。"_s});
    });
}

bool TableExists(Session& session, Database& database, const QString& name)
{
    bool exists = false;
    guarded(session.reporting, Location, [&] { exists = database.tableExists(name); });
    return exists;
}

void CreateCategoryTables(Session& session)
{
    guarded(session.reporting, Location, [&] {
        if (!session.OpenDb)
            throw Error(errors::ObjectNotSet);
        // Both or, when the program ends in between, none: only the absence of the first makes a later opening convert.
        inWriteTransaction(*session.OpenDb, [&] {
            session.OpenDb->execute(schema::Category_ID().statement);
            session.OpenDb->execute(schema::Category().statement);
        });
    });
}

} // namespace quillon
