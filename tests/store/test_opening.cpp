#include "app/base/error.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/store/foreign_file.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <memory>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

namespace
{

const QStringList StepsToLink = {
    u"1: 定義データテーブルを展開中です。"_s, u"1: ファイルデータテーブルを展開中です。"_s,
    u"1: 文献データテーブルを展開中です。"_s, u"1: リンク情報テーブルを展開中です。"_s};
const QStringList StepsAfterLink = {u"1: カテゴリ情報テーブルを展開中です。"_s,
                                    u"1: 分類情報テーブルを展開中です。"_s, u"enable menus"_s};

QStringList allSteps(const QString& name)
{
    return QStringList{u"clear list"_s, u"1: データベース : "_s + name + u" を展開中です。"_s} + StepsToLink +
           StepsAfterLink +
           QStringList{u"1: データベース ("_s + name + u")が展開されています｡ "_s, u"rebuild tree"_s};
}

} // namespace

class TestOpening : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_world = std::make_unique<TestWorld>(); }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void openingTellsEveryStepInOrder()
    {
        const QString path = m_world->createDatabase();
        QVERIFY(OpenDbFile(m_world->session, path));
        QCOMPARE(m_world->mainWindow.calls, allSteps(u"QUILLON.mdb"_s));
        QCOMPARE(m_world->session.MainLastFieldIndex, 2);
        QCOMPARE(m_world->session.OpenDb->path(), path);
        const QList<std::shared_ptr<RecordSet>> sets = {
            m_world->session.RsMain,    m_world->session.RsRefDoc, m_world->session.RsRefFile,
            m_world->session.RsOpenApp, m_world->session.RsLink,   m_world->session.RsCategoryID,
            m_world->session.RsCategory};
        for (qsizetype i = 0; i < sets.size(); ++i) {
            QVERIFY(sets[i]);
            QCOMPARE(sets[i]->table().name, schema::all()[static_cast<std::size_t>(i)]->name);
            QCOMPARE(&sets[i]->database(), m_world->session.OpenDb.get());
        }
    }

    void aNameWithoutASeparatorIsShownEmptyButOpens()
    {
        m_world->createDatabase();
        m_world->dialogs.expect({.text = u"特定文字列の取得に必要な区切文字が見つかりませんでした。"_s,
                                 .title = u"特定文字列抽出処理"_s});
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_world->folder.path()));
        const bool opened = OpenDbFile(m_world->session, u"QUILLON.mdb"_s);
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(opened);
        QCOMPARE(m_world->mainWindow.calls, allSteps(QString()));
    }

    void aMissingFileLeavesEverythingAsItWas()
    {
        const QString path = m_world->createDatabase();
        QVERIFY(OpenDbFile(m_world->session, path));
        const auto database = m_world->session.OpenDb;
        const auto rows = m_world->session.RsMain;
        m_world->mainWindow.calls.clear();
        m_world->dialogs.expect(failure(errors::DatabaseNotFound));
        QVERIFY(!OpenDbFile(m_world->session, m_world->folder.filePath(u"none.mdb"_s)));
        QCOMPARE(m_world->session.OpenDb, database);
        QCOMPARE(m_world->session.RsMain, rows);
        QCOMPARE(m_world->mainWindow.calls,
                 QStringList({u"clear list"_s, u"1: データベース : none.mdb を展開中です。"_s}));
        QCOMPARE(m_world->eventLog.lines.size(), 1);
        QVERIFY(m_world->eventLog.lines.first().contains(u"LOCATION : OpenDbFile, ErrorNumber : 3024"_s));
    }

    void aFailureHalfwayLeavesAMixedState()
    {
        QVERIFY(OpenDbFile(m_world->session, m_world->createDatabase()));
        const auto oldDatabase = m_world->session.OpenDb;
        const auto oldDocuments = m_world->session.RsRefDoc;
        const auto oldFiles = m_world->session.RsRefFile;
        const QString other = m_world->createDatabase(u"other.mdb"_s);
        ForeignFile(other).run("DROP TABLE RefDoc");
        m_world->dialogs.expect(failure(errors::TableNotFound));
        QVERIFY(!OpenDbFile(m_world->session, other));
        QVERIFY(m_world->session.OpenDb != oldDatabase);
        QCOMPARE(&m_world->session.RsMain->database(), m_world->session.OpenDb.get());
        QVERIFY(m_world->session.RsRefFile != oldFiles);
        QCOMPARE(m_world->session.RsRefDoc, oldDocuments);
        QCOMPARE(m_world->mainWindow.calls.last(), u"1: 文献データテーブルを展開中です。"_s);
        QCOMPARE(oldDocuments->recordCount(), 0);
    }

    void openingWithoutAMainWindowIsReported()
    {
        m_world->session.setMainWindow(nullptr);
        m_world->dialogs.expect(failure(errors::ObjectNotSet));
        QVERIFY(!OpenDbFile(m_world->session, m_world->createDatabase()));
        QVERIFY(!m_world->session.OpenDb);
    }

    void anOlderFileGainsTheCategoryTablesOnce()
    {
        const QString path = m_world->createDatabase();
        ForeignFile(path).run("DROP TABLE Category_ID; DROP TABLE Category;"
                              "INSERT INTO Main VALUES ('水', 'M-991231-001', 'x')");
        m_world->dialogs.expect(conversion());
        QVERIFY(OpenDbFile(m_world->session, path));
        QCOMPARE(m_world->mainWindow.calls, allSteps(u"QUILLON.mdb"_s));
        QCOMPARE(m_world->session.RsCategoryID->recordCount(), 0);
        QCOMPARE(m_world->session.RsCategory->recordCount(), 0);
        QCOMPARE(m_world->session.RsMain->recordCount(), 1);
        QVERIFY(OpenDbFile(m_world->session, path));
        QCOMPARE(tablesOf(path).size(), 7);
    }

    void categoryAloneExistingIsReportedAndOpeningGoesOn()
    {
        const QString path = m_world->createDatabase();
        ForeignFile(path).run("DROP TABLE Category_ID; INSERT INTO Category VALUES ('A', 'M-991231-001')");
        m_world->dialogs.expect(conversion());
        m_world->dialogs.expect(failure(errors::TableExists));
        QVERIFY(OpenDbFile(m_world->session, path));
        QCOMPARE(m_world->mainWindow.calls, allSteps(u"QUILLON.mdb"_s));
        QCOMPARE(m_world->session.RsCategoryID->recordCount(), 0);
        QCOMPARE(m_world->session.RsCategory->recordCount(), 1);
    }

    void categoryIdAloneExistingIsNoOlderFile()
    {
        const QString path = m_world->createDatabase();
        ForeignFile(path).run("DROP TABLE Category");
        m_world->dialogs.expect(failure(errors::TableNotFound));
        QVERIFY(!OpenDbFile(m_world->session, path));
        QVERIFY(m_world->session.RsCategoryID);
        QVERIFY(!m_world->session.RsCategory);
        QCOMPARE(m_world->mainWindow.calls.last(), u"1: 分類情報テーブルを展開中です。"_s);
    }

    void tableNamesCompareExactly()
    {
        m_world->openDatabase(m_world->createDatabase());
        Database& database = *m_world->session.OpenDb;
        QVERIFY(TableExists(m_world->session, database, u"Category_ID"_s));
        QVERIFY(!TableExists(m_world->session, database, u"category_id"_s));
        QVERIFY(!TableExists(m_world->session, database, u"Main_Index"_s));
        QVERIFY(!TableExists(m_world->session, database, u"sqlite_autoindex_Main_1"_s));
        QVERIFY(!TableExists(m_world->session, database, QString()));
    }

    void aFailingTableTestIsReportedAndFalse()
    {
        m_world->openDatabase(m_world->createDatabase());
        const auto holder = Database::open(m_world->session.OpenDb->path());
        holder->connection().execute(u"BEGIN EXCLUSIVE"_s);
        m_world->dialogs.expect(failure(errors::Locked));
        QVERIFY(!TableExists(m_world->session, *m_world->session.OpenDb, u"Main"_s));
    }

    void creatingCategoryTablesWithoutADatabaseIsReported()
    {
        m_world->dialogs.expect(failure(errors::ObjectNotSet));
        CreateCategoryTables(m_world->session);
    }

    void aNewDatabaseIsOpenedAndTold()
    {
        const QString path = m_world->folder.filePath(u"新 しい'もの.mdb"_s);
        m_world->dialogs.expect(
            {.text = u"Quillon 用のデータベースを作成しました。"_s, .title = u"Quillon"_s});
        m_world->dialogs.meanwhile([this] { QVERIFY(m_world->session.RsCategory); });
        CreateDbFile(m_world->session, path);
        QCOMPARE(m_world->mainWindow.calls, allSteps(u"新 しい'もの.mdb"_s));
        QCOMPARE(m_world->session.OpenDb->path(), path);
        for (const auto& rows :
             {m_world->session.RsMain, m_world->session.RsRefDoc, m_world->session.RsRefFile,
              m_world->session.RsOpenApp, m_world->session.RsLink, m_world->session.RsCategoryID,
              m_world->session.RsCategory})
            QCOMPARE(rows->recordCount(), 0);
    }

    void aNewDatabaseHoldsSevenTablesAndNothingElse()
    {
        m_world->dialogs.expect({.text = u"Quillon 用のデータベースを作成しました。"_s});
        const QString path = m_world->folder.filePath(u"new.mdb"_s);
        CreateDbFile(m_world->session, path);
        QCOMPARE(tablesOf(path), QStringList({u"Main"_s, u"RefDoc"_s, u"RefFile"_s, u"OpenApp"_s, u"Link"_s,
                                              u"Category_ID"_s, u"Category"_s}));
        ForeignFile file(path);
        // The only other entries are the engine's own indexes behind the six unique constraints.
        QCOMPARE(file.ask("SELECT count(*) FROM sqlite_master WHERE type <> 'table'"), QStringList(u"6"_s));
        QCOMPARE(
            file.ask("SELECT name FROM sqlite_master WHERE type <> 'table' AND NOT (type = 'index' AND sql IS"
                     " NULL AND name GLOB 'sqlite_autoindex_*')"),
            QStringList());
        QCOMPARE(file.ask("PRAGMA encoding"), QStringList(u"UTF-16le"_s));
        QCOMPARE(file.ask("PRAGMA journal_mode"), QStringList(u"delete"_s));
        QCOMPARE(file.ask("PRAGMA integrity_check"), QStringList(u"ok"_s));
        // Every field is text to the engine, the long one included.
        for (const TableSchema* table : schema::all()) {
            const QString question =
                u"SELECT count(*) FROM pragma_table_info('"_s + table->name +
                u"') WHERE type NOT LIKE 'TEXT%' OR pk OR \"notnull\" OR dflt_value IS NOT NULL"_s;
            QCOMPARE(file.ask(question.toUtf8().constData()), QStringList(u"0"_s));
        }
    }

    void workingWithADatabaseAddsNothingToItsSchema()
    {
        m_world->openDatabase(m_world->createDatabase());
        TestWorld::addRow(m_world->session.RsRefDoc, {u"a"_s, u"R-991231-001"_s, u"水"_s});
        m_world->session.RsRefDoc->filtered(u"Explanation Like '*水*'"_s)->moveFirst();
        const QString path = m_world->session.OpenDb->path();
        QCOMPARE(tablesOf(path).size(), 7);
        QCOMPARE(ForeignFile(path).ask("SELECT count(*) FROM sqlite_master"), QStringList(u"13"_s));
        QCOMPARE(QDir(m_world->folder.path()).entryList(QDir::Files), QStringList(u"QUILLON.mdb"_s));
    }

    void creatingOverAFileIsReportedAndChangesNothing()
    {
        const QString path = m_world->createDatabase();
        ForeignFile(path).run("INSERT INTO Main VALUES ('水', 'M-991231-001', 'x')");
        m_world->dialogs.expect(failure(errors::DatabaseExists));
        CreateDbFile(m_world->session, path);
        QVERIFY(!m_world->session.OpenDb);
        QCOMPARE(m_world->mainWindow.calls, QStringList());
        QCOMPARE(ForeignFile(path).ask("SELECT Name FROM Main"), QStringList(u"水"_s));
    }

    void creatingInAMissingFolderIsReported()
    {
        m_world->dialogs.expect(failure(errors::PathNotFound));
        CreateDbFile(m_world->session, m_world->folder.filePath(u"none/new.mdb"_s));
        QVERIFY(!m_world->session.OpenDb);
    }

    void aFailingStatementIsReportedByItsNumber()
    {
        const auto database = Database::create(m_world->folder.filePath(u"new.mdb"_s));
        database->execute(schema::Main().statement);
        QCOMPARE(errorOf([&] { database->execute(schema::Main().statement); }), errors::TableExists);
        QCOMPARE(errorOf([&] { database->execute(u"CREATE TABLE"_s); }), errors::CriteriaSyntax);
        QCOMPARE(errorOf([&] { database->execute(QString()); }), errors::CriteriaSyntax);
        QCOMPARE(errorOf([&] { database->execute(u"DROP TABLE Absent"_s); }), errors::TableNotFound);
    }

    void aCreationThatStopsHalfwayLeavesTheTablesSoFar()
    {
        const QString path = m_world->folder.filePath(u"half.mdb"_s);
        {
            const auto database = Database::create(path);
            QVERIFY(QFileInfo(path).size() > 0);
            database->execute(schema::Main().statement);
            database->execute(schema::RefDoc().statement);
        }
        QCOMPARE(tablesOf(path), QStringList({u"Main"_s, u"RefDoc"_s}));
        m_world->dialogs.expect(failure(errors::TableNotFound));
        QVERIFY(!OpenDbFile(m_world->session, path));
        // A second attempt under the same name is refused, too: nothing is ever replaced.
        m_world->dialogs.expect(failure(errors::DatabaseExists));
        CreateDbFile(m_world->session, path);
    }

    void pathsBelowTheCurrentFolderUseTheSeparatorOfThePlatform()
    {
        QCOMPARE(m_world->session.inCurrentFolder(u"RefFile"_s),
                 m_world->folder.path() + QDir::separator() + u"RefFile"_s);
    }

private:
    static MessageBox failure(qint32 number)
    {
        return {.text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "_s +
                        standardDescription(number),
                .title = u"Quillon 障害対策部"_s};
    }

    static MessageBox conversion()
    {
        return {.text = u"カテゴリ情報テーブルが存在しませんでした。\r\nカテゴリテーブルを作成します。"_s,
                .title = u"データベースコンバート処理"_s};
    }

    static QStringList tablesOf(const QString& path)
    {
        return ForeignFile(path).ask("SELECT name FROM sqlite_master WHERE type = 'table'");
    }

    std::unique_ptr<TestWorld> m_world;
};

QTEST_GUILESS_MAIN(TestOpening)
#include "test_opening.moc"
