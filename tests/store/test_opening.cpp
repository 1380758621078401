#include "app/base/error.h"
#include "store/opened_file.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/store/foreign_file.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <memory>

#ifdef Q_OS_UNIX
#include <sys/resource.h>

#include <csignal>
#endif

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

namespace
{

QString status(const QString& text)
{
    return u"frmMainMenu.setStatus 1 "_s + text;
}

/// What a complete opening asks of the world; `conversion` stands between the links and the categories.
QStringList allSteps(const QString& name, const QStringList& conversion = {})
{
    return QStringList{u"frmMainMenu.clearDataList"_s,
                       status(u"データベース : "_s + name + u" を展開中です。"_s),
                       status(u"定義データテーブルを展開中です。"_s),
                       status(u"ファイルデータテーブルを展開中です。"_s),
                       status(u"文献データテーブルを展開中です。"_s),
                       status(u"リンク情報テーブルを展開中です。"_s)} +
           conversion +
           QStringList{status(u"カテゴリ情報テーブルを展開中です。"_s),
                       status(u"分類情報テーブルを展開中です。"_s), u"frmMainMenu.enableDatabaseMenus"_s,
                       status(u"データベース ("_s + name + u")が展開されています｡ "_s),
                       u"frmMainMenu.rebuildCategoryTree"_s};
}

#ifdef Q_OS_UNIX
/// While it lives, no file of this process can grow beyond a size.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_signalBefore(std::signal(SIGXFSZ, SIG_IGN))
    {
        if (getrlimit(RLIMIT_FSIZE, &m_before) != 0)
            qFatal("cannot read the limit");
        set({bytes, m_before.rlim_max});
    }
    ~FileSizeLimit()
    {
        set(m_before);
        std::signal(SIGXFSZ, m_signalBefore);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    static void set(const rlimit& limit)
    {
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            qFatal("cannot set the limit");
    }

    void (*m_signalBefore)(int);
    rlimit m_before = {};
};
#endif

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
        QVERIFY(compareLines(m_world->calls.lines(), allSteps(u"QUILLON.mdb"_s)));
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

    void theNewDatabaseTakesTheOldOnesPlaceAsAWhole()
    {
        // At each call: which of the record sets, in the order of opening, belong to the new database already.
        const QString path = m_world->createDatabase(u"neu.mdb"_s);
        QVERIFY(OpenDbFile(m_world->session, m_world->createDatabase()));
        const Session& session = m_world->session;
        const auto former = session.OpenDb;
        m_world->session.MainLastFieldIndex = 0;
        QStringList found;
        m_world->calls.take();
        m_world->calls.atEveryCall([&](const QString&) {
            QString state = session.OpenDb == former ? u"-"_s : u"D"_s;
            for (const auto& [letter, rows] :
                 {std::pair(u'M', session.RsMain), std::pair(u'O', session.RsOpenApp),
                  std::pair(u'F', session.RsRefFile), std::pair(u'R', session.RsRefDoc),
                  std::pair(u'L', session.RsLink), std::pair(u'I', session.RsCategoryID),
                  std::pair(u'C', session.RsCategory)})
                state += &rows->database() == former.get() ? QChar(u'-') : QChar(letter);
            found << state + QString::number(session.MainLastFieldIndex);
        });
        QVERIFY(OpenDbFile(m_world->session, path));
        // None, until all of them do.
        QVERIFY(compareLines(found, QStringList(8, u"--------0"_s) + QStringList(3, u"DMOFRLIC2"_s)));
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
        QVERIFY(compareLines(
            m_world->calls.lines(),
            QStringList{messageBoxCall(u"特定文字列の取得に必要な区切文字が見つかりませんでした。"_s)} +
                allSteps(QString())));
    }

    void aMissingFileLeavesEverythingAsItWas()
    {
        const QString path = m_world->createDatabase();
        QVERIFY(OpenDbFile(m_world->session, path));
        const auto database = m_world->session.OpenDb;
        const auto rows = m_world->session.RsMain;
        m_world->calls.take();
        m_world->dialogs.expect(failure(errors::DatabaseNotFound));
        QVERIFY(!OpenDbFile(m_world->session, m_world->folder.filePath(u"none.mdb"_s)));
        QCOMPARE(m_world->session.OpenDb, database);
        QCOMPARE(m_world->session.RsMain, rows);
        QVERIFY(compareLines(
            m_world->calls.lines(),
            QStringList{u"frmMainMenu.clearDataList"_s, status(u"データベース : none.mdb を展開中です。"_s)} +
                failureCalls(u"OpenDbFile"_s, 3024)));
    }

    void aFailureHalfwayLeavesTheDatabaseBefore()
    {
        const QString before = m_world->createDatabase();
        QVERIFY(OpenDbFile(m_world->session, before));
        TestWorld::addRow(m_world->session.RsRefDoc, {u"水"_s, u"R-991231-001"_s, u"x"_s});
        m_world->session.LinkSourceMode = true;
        const QString other = m_world->createDatabase(u"other.mdb"_s);
        ForeignFile(other).run("DROP TABLE RefDoc");
        FakeDataWindow& window = openWindow();
        m_world->dialogs.expect(failure(errors::TableNotFound));
        QVERIFY(!OpenDbFile(m_world->session, other));
        QCOMPARE(m_world->session.OpenDb->path(), before);
        for (const auto& rows :
             {m_world->session.RsMain, m_world->session.RsRefDoc, m_world->session.RsRefFile,
              m_world->session.RsOpenApp, m_world->session.RsLink, m_world->session.RsCategoryID,
              m_world->session.RsCategory})
            QCOMPARE(&rows->database(), m_world->session.OpenDb.get());
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsRefDoc), QStringList(u"水|R-991231-001|x"_s));
        QCOMPARE(m_world->calls.about(u"frmMainMenu"_s).last(),
                 status(u"文献データテーブルを展開中です。"_s));
        QVERIFY(m_world->session.LinkSourceMode);
        QCOMPARE(window.calls.about(u"frmMainData"_s), QStringList()); // not asked anything
    }

    void anotherFileClosesTheWindowsOfTheOneBefore()
    {
        QVERIFY(OpenDbFile(m_world->session, m_world->createDatabase()));
        const auto before = m_world->session.OpenDb;
        m_world->session.LinkSourceMode = true;
        m_world->windows.list.push_back(&m_world->windows.selection);
        m_world->windows.list.push_back(&m_world->windows.chooser);
        m_world->windows.list.push_back(&m_world->windows.links);
        FakeDataWindow& window = openWindow();
        window.onUnload = [&, remove = window.onUnload] {
            QCOMPARE(m_world->session.OpenDb, before); // a save goes to where it belongs
            remove();
        };
        m_world->calls.take();
        QVERIFY(OpenDbFile(m_world->session, m_world->createDatabase(u"other.mdb"_s)));
        QStringList steps = allSteps(u"other.mdb"_s);
        // The question when all is read; the lists without one, when the other file has become the current one.
        const auto menus = steps.indexOf(u"frmMainMenu.enableDatabaseMenus"_s);
        for (const QString& call :
             {u"frmLinkList.unload"_s, u"frmCategory.unload"_s, u"frmDataSelect.unload"_s,
              u"frmMainData.unload"_s, u"frmMainData.mayUnload"_s})
            steps.insert(menus, call);
        QVERIFY(compareLines(m_world->calls.lines(), steps));
        QVERIFY(!m_world->session.LinkSourceMode);
    }

    void aWindowThatStaysKeepsTheDatabaseSilently()
    {
        const QString path = m_world->createDatabase();
        QVERIFY(OpenDbFile(m_world->session, path));
        const auto rows = m_world->session.RsMain;
        m_world->windows.list.push_back(&m_world->windows.selection);
        openWindow().closes = false;
        m_world->calls.take();
        QCOMPARE(openDatabase(m_world->session, m_world->createDatabase(u"other.mdb"_s)), Opening::Declined);
        QCOMPARE(m_world->session.OpenDb->path(), path);
        QCOMPARE(m_world->session.RsMain, rows);
        QStringList steps = allSteps(u"other.mdb"_s);
        steps.resize(steps.indexOf(u"frmMainMenu.enableDatabaseMenus"_s));
        steps << u"frmMainData.mayUnload"_s << u"frmMainMenu.showAgain"_s;
        QVERIFY(compareLines(m_world->calls.lines(), steps));
    }

    void aNewFileThatWasDeclinedStaysWithoutAMessage()
    {
        QVERIFY(OpenDbFile(m_world->session, m_world->createDatabase()));
        openWindow().closes = false;
        const QString path = m_world->folder.filePath(u"new.mdb"_s);
        QCOMPARE(CreateDbFile(m_world->session, path), Opening::Declined);
        QCOMPARE(tablesOf(path).size(), 7);
    }

    void theSameFileAgainAsksNothing()
    {
        const QString path = m_world->createDatabase();
        QVERIFY(OpenDbFile(m_world->session, path));
        m_world->session.LinkSourceMode = true;
        openWindow().closes = false;
        m_world->windows.list.push_back(&m_world->windows.selection);
#ifdef Q_OS_UNIX
        const QString link = m_world->folder.filePath(u"link.mdb"_s);
        QVERIFY(QFile::link(path, link));
        QVERIFY(OpenDbFile(m_world->session, link));
#endif
        QVERIFY(OpenDbFile(m_world->session, path));
        QCOMPARE(m_world->windows.list.size(), 3U);
        QVERIFY(m_world->session.LinkSourceMode);
    }

    void categoriesThatCannotBeReadKeepTheDatabaseBefore()
    {
        QVERIFY(OpenDbFile(m_world->session, m_world->createDatabase()));
        const QString before = m_world->session.OpenDb->path();
        const QString other = m_world->createDatabase(u"other.mdb"_s);
        const QString page =
            ForeignFile(other)
                .run(
                    "INSERT INTO Category_ID WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE"
                    " i < 500) SELECT 'A' || i, 'name' FROM n")
                .ask("SELECT max(pageno) FROM dbstat WHERE name = 'Category_ID' AND pagetype = 'leaf'")
                .value(0);
        const QString firstOfPage =
            ForeignFile(other)
                .ask(
                    "SELECT 1 + sum(ncell) FROM dbstat WHERE name = 'Category_ID' AND pagetype = 'leaf' AND pageno <"
                    " (SELECT max(pageno) FROM dbstat WHERE name = 'Category_ID' AND pagetype = 'leaf')")
                .value(0);
        QFile file(other);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.seek((page.toLongLong() - 1) * 4096));
        QCOMPARE(file.write(QByteArray(4096, '\x5A')), 4096);
        file.close();
        const QString told =
            u"データベースが壊れているため、テーブル Category_ID の %1 行目を読み取れませんでした。控えのファイルを展開してください。"_s
                .arg(firstOfPage);
        m_world->dialogs.expect(
            {.text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "_s + told,
             .title = u"Quillon 障害対策部"_s});
        QVERIFY(!OpenDbFile(m_world->session, other));
        QVERIFY2(m_world->eventLog.lines.last().endsWith(u", DESCRIPTION : "_s + told),
                 qPrintable(m_world->eventLog.lines.last() + told));
        QCOMPARE(m_world->session.OpenDb->path(), before);
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
        QVERIFY(compareLines(m_world->calls.lines(),
                             allSteps(u"QUILLON.mdb"_s, {messageBoxCall(conversion().text)})));
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
        QVERIFY(compareLines(m_world->calls.lines(),
                             allSteps(u"QUILLON.mdb"_s, QStringList{messageBoxCall(conversion().text)} +
                                                            failureCalls(u"OpenDbFile"_s, 3010))));
        QCOMPARE(m_world->session.RsCategoryID->recordCount(), 0);
        QCOMPARE(m_world->session.RsCategory->recordCount(), 1);
    }

    void categoryIdAloneExistingIsNoOlderFile()
    {
        const QString path = m_world->createDatabase();
        ForeignFile(path).run("INSERT INTO Main VALUES ('水', 'M-991231-001', 'x')");
        ForeignFile(path).run("DROP TABLE Category");
        m_world->dialogs.expect(failure(errors::TableNotFound));
        QVERIFY(!OpenDbFile(m_world->session, path));
        QVERIFY(!m_world->session.OpenDb);
        QCOMPARE(m_world->calls.about(u"frmMainMenu"_s).last(), status(u"分類情報テーブルを展開中です。"_s));
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
        CreateCategoryTables(m_world->session, nullptr);
    }

    void bothCategoryTablesAreMadeAsOneDurableWrite()
    {
        const QString path = m_world->createDatabase();
        ForeignFile(path).run("DROP TABLE Category_ID; DROP TABLE Category");
        const auto database = Database::open(path);
        const WriteCounter writes(*database);
        CreateCategoryTables(m_world->session, database);
        QCOMPARE(writes.count, 1);
        QCOMPARE(tablesOf(path).size(), 7);
    }

    void aNewDatabaseIsOpenedAndTold()
    {
        const QString path = m_world->folder.filePath(u"新 しい'もの.mdb"_s);
        m_world->dialogs.expect(
            {.text = u"Quillon 用のデータベースを作成しました。"_s, .title = u"Quillon"_s});
        m_world->dialogs.meanwhile([this] { QVERIFY(m_world->session.RsCategory); });
        CreateDbFile(m_world->session, path);
        QVERIFY(compareLines(m_world->calls.lines(),
                             allSteps(u"新 しい'もの.mdb"_s) +
                                 QStringList{messageBoxCall(u"Quillon 用のデータベースを作成しました。"_s)}));
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
        QCOMPARE(m_world->calls.about(u"frmMainMenu"_s), QStringList());
        QCOMPARE(ForeignFile(path).ask("SELECT Name FROM Main"), QStringList(u"水"_s));
    }

    void creatingInAMissingFolderIsReported()
    {
        m_world->dialogs.expect(failure(errors::PathNotFound));
        CreateDbFile(m_world->session, m_world->folder.filePath(u"none/new.mdb"_s));
        QVERIFY(!m_world->session.OpenDb);
    }

    void aFailingStatementIsReportedByItsNumber_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<int>("number");
        const auto row = [](const char* name, const QString& statement, qint32 number) {
            QTest::newRow(name) << statement << static_cast<int>(number);
        };
        row("table exists", schema::Main().statement, errors::TableExists);
        row("no such table", u"DROP TABLE Absent"_s, errors::TableNotFound);
        row("incomplete", u"CREATE TABLE"_s, errors::CriteriaSyntax);
        row("wrong word", u"CREATE TABEL t (a)"_s, errors::CriteriaSyntax);
        row("open quote", u"CREATE TABLE t (a DEFAULT 'x)"_s, errors::CriteriaSyntax);
        row("nothing", QString(), errors::CriteriaSyntax);
        row("blanks", u" \r\n\t"_s, errors::CriteriaSyntax);
        row("semicolon alone", u";"_s, errors::CriteriaSyntax);
        row("two statements", u"CREATE TABLE t (a); CREATE TABLE u (a)"_s, errors::CriteriaSyntax);
        row("a comment behind", u"CREATE TABLE t (a); -- really"_s, errors::CriteriaSyntax);
        row("a zero behind", u"CREATE TABLE t (a);\0DROP TABLE Main"_s, errors::CriteriaSyntax);
        row("blanks behind", u"CREATE TABLE t (a); \r\n"_s, 0);
        // What is no slip of the pen is not called one.
        row("no such function", u"CREATE TABLE t (a CHECK (unheard_of(a)))"_s, errors::InvalidArgument);
        row("no transaction", u"COMMIT"_s, errors::InvalidArgument);
        row("no such index", u"DROP INDEX absent"_s, errors::InvalidArgument);
    }
    void aFailingStatementIsReportedByItsNumber()
    {
        QFETCH(QString, statement);
        QFETCH(int, number);
        const QString path = m_world->folder.filePath(u"new.mdb"_s);
        const auto database = Database::create(path);
        database->execute(schema::Main().statement);
        QCOMPARE(errorOf([&] { database->execute(statement); }), number);
        // Of several statements not even the first one runs.
        QCOMPARE(tablesOf(path).size(), number == 0 ? 2 : 1);
    }

    void aTableOfALaterVersionIsNoDatabaseHere()
    {
        const QString path = m_world->createDatabase();
        {
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.seek(47)); // the lowest byte of the number of the schema's format
            QCOMPARE(file.write("\x63", 1), 1);
        }
        QCOMPARE(errorOf([&] { Database::open(path); }), errors::NotADatabase);
    }

    void onlyATypeIsTakenForMemo_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("stored");
        const auto row = [](const char* name, const QString& statement, const QString& stored) {
            QTest::newRow(name) << statement << stored;
        };
        row("type", u"CREATE TABLE t (a MEMO, b MEMO)"_s, u"CREATE TABLE t (a TEXT, b TEXT)"_s);
        row("small letters", u"create table t (a memo)"_s, u"CREATE TABLE t (a TEXT)"_s);
        row("behind a comment", u"CREATE TABLE t (a/* MEMO */MEMO)"_s, u"CREATE TABLE t (a/* MEMO */TEXT)"_s);
        row("field", u"CREATE TABLE t (Memo TEXT, b TEXT)"_s, u"CREATE TABLE t (Memo TEXT, b TEXT)"_s);
        row("field without a type", u"CREATE TABLE t (Memo, a)"_s, u"CREATE TABLE t (Memo, a)"_s);
        row("field and type", u"CREATE TABLE t (Memo MEMO)"_s, u"CREATE TABLE t (Memo TEXT)"_s);
        row("quoted field", u"CREATE TABLE t (\"a MEMO\" MEMO)"_s, u"CREATE TABLE t (\"a MEMO\" TEXT)"_s);
        row("field in brackets", u"CREATE TABLE t ([a, MEMO] MEMO)"_s, u"CREATE TABLE t ([a, MEMO] TEXT)"_s);
        row("Japanese field", u"CREATE TABLE t (メモ MEMO)"_s, u"CREATE TABLE t (メモ TEXT)"_s);
        row("part of a word", u"CREATE TABLE t (a MEMORANDUM, b_MEMO)"_s,
            u"CREATE TABLE t (a MEMORANDUM, b_MEMO)"_s);
        row("value", u"CREATE TABLE t (a TEXT DEFAULT 'is MEMO', b DEFAULT ', c MEMO')"_s,
            u"CREATE TABLE t (a TEXT DEFAULT 'is MEMO', b DEFAULT ', c MEMO')"_s);
        row("value with a quote", u"CREATE TABLE t (a DEFAULT 'it''s, b MEMO', c MEMO)"_s,
            u"CREATE TABLE t (a DEFAULT 'it''s, b MEMO', c TEXT)"_s);
        row("constraint", u"CREATE TABLE t (a MEMO, CONSTRAINT Memo UNIQUE (a))"_s,
            u"CREATE TABLE t (a TEXT, CONSTRAINT Memo UNIQUE (a))"_s);
        row("expression", u"CREATE TABLE t (Memo, CHECK (NOT Memo), UNIQUE (Memo))"_s,
            u"CREATE TABLE t (Memo, CHECK (NOT Memo), UNIQUE (Memo))"_s);
        row("table", u"CREATE TABLE Memo (a MEMO)"_s, u"CREATE TABLE Memo (a TEXT)"_s);
        row("query", u"CREATE VIEW t AS SELECT a FROM (SELECT 1 a, 2 MEMO) MEMO"_s,
            u"CREATE VIEW t AS SELECT a FROM (SELECT 1 a, 2 MEMO) MEMO"_s);
        row("table made of a query", u"CREATE TABLE t AS SELECT * FROM (SELECT 1 a, 2 MEMO)"_s,
            u"CREATE TABLE t(a,MEMO)"_s);
        row("the table of documents", schema::RefDoc().statement,
            u"CREATE TABLE RefDoc (Name TEXT(50), Object_ID TEXT(12), Explanation TEXT, "
            u"CONSTRAINT RefDoc_Index UNIQUE (Object_ID))"_s);
    }
    void onlyATypeIsTakenForMemo()
    {
        QFETCH(QString, statement);
        QFETCH(QString, stored);
        const QString path = m_world->folder.filePath(u"new.mdb"_s);
        Database::create(path)->execute(statement);
        const QStringList found =
            ForeignFile(path).ask("SELECT sql FROM sqlite_master WHERE sql IS NOT NULL");
        QCOMPARE(found.size(), 1);
        QVERIFY(compareText(found.first(), stored));
    }

    void fieldsThatAreAddedMayBeMemos()
    {
        const QString path = m_world->folder.filePath(u"new.mdb"_s);
        const auto database = Database::create(path);
        database->execute(u"CREATE TABLE t (a)"_s);
        database->execute(u"ALTER TABLE t ADD COLUMN b MEMO"_s);
        database->execute(u"ALTER TABLE t ADD c MEMO"_s);
        database->execute(u"ALTER TABLE t ADD COLUMN Memo INTEGER"_s);
        database->execute(u"ALTER TABLE t RENAME COLUMN Memo TO MEMO"_s);
        QCOMPARE(ForeignFile(path).ask("SELECT name, type FROM pragma_table_info('t')"),
                 QStringList({u"a|"_s, u"b|TEXT"_s, u"c|TEXT"_s, u"MEMO|INTEGER"_s}));
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
        ForeignFile(path).run("INSERT INTO Main VALUES ('水', 'M-991231-001', 'x')");
        m_world->dialogs.expect(failure(errors::TableNotFound));
        QVERIFY(!OpenDbFile(m_world->session, path));
        // A second attempt under the same name is refused, too: nothing is ever replaced.
        m_world->dialogs.expect(failure(errors::DatabaseExists));
        CreateDbFile(m_world->session, path);
    }

    void aFullDiskStopsACreationHalfway()
    {
        const QString path = m_world->folder.filePath(u"full.mdb"_s);
        {
            const auto database = Database::create(path);
            // One page for the list of tables, two for each table with its index.
            database->connection().execute(u"PRAGMA max_page_count = 5"_s);
            database->execute(schema::Main().statement);
            database->execute(schema::RefDoc().statement);
            QCOMPARE(errorOf([&] { database->execute(schema::RefFile().statement); }), errors::DiskFull);
        }
        QCOMPARE(tablesOf(path), QStringList({u"Main"_s, u"RefDoc"_s}));
        QCOMPARE(ForeignFile(path).ask("PRAGMA integrity_check"), QStringList(u"ok"_s));
        QVERIFY(!QFileInfo::exists(path + u"-journal"_s));
    }

    void aFailingStatementEndsTheCreation()
    {
#ifdef Q_OS_UNIX
        const QString before = m_world->createDatabase();
        QVERIFY(OpenDbFile(m_world->session, before));
        m_world->calls.take();
        const QString path = m_world->folder.filePath(u"half.mdb"_s);
        MessageBox tooLarge = failure(errors::PathFileAccess);
        tooLarge.text =
            u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "
            u"ファイルの大きさが上限を超えるため書き込めません。別のディスクを使用してください。"_s;
        m_world->dialogs.expect(tooLarge);
        {
            // The file, too, cannot grow beyond five pages; the third table needs the sixth.
            const FileSizeLimit limit(5 * 4096);
            CreateDbFile(m_world->session, path);
        }
        // Neither the remaining statements nor the opening nor the message of success.
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        QCOMPARE(m_world->eventLog.lines.size(), 1);
        QVERIFY(m_world->eventLog.lines.first().contains(u"LOCATION : OpenDbFile, ErrorNumber : 75,"_s));
        QCOMPARE(m_world->calls.about(u"frmMainMenu"_s), QStringList());
        QCOMPARE(m_world->session.OpenDb->path(), before);
        // It is one write, of which nothing stays when the disk fails.
        QCOMPARE(tablesOf(path), QStringList());
        QCOMPARE(ForeignFile(path).ask("PRAGMA integrity_check"), QStringList(u"ok"_s));
#else
        QSKIP("The size of files cannot be limited here.");
#endif
    }

    void aDatabaseThatWasMadeIsToldEvenWhenItDoesNotOpen()
    {
        const QString path = m_world->folder.filePath(u"new.mdb"_s);
        m_world->session.setMainWindow(nullptr);
        m_world->dialogs.expect(failure(errors::ObjectNotSet));
        m_world->dialogs.expect({.text = u"Quillon 用のデータベースを作成しました。"_s});
        CreateDbFile(m_world->session, path);
        QVERIFY(!m_world->session.OpenDb);
        QCOMPARE(tablesOf(path).size(), 7);
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

    FakeDataWindow& openWindow()
    {
        m_world->windows.newDataWindow(u"M"_s);
        m_world->calls.take();
        return *m_world->windows.dataWindows.back();
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
