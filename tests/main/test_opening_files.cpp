// Whatever file is chosen, the program tells what is wrong with it and goes on.
#include "app/base/ports/category_chooser.h"
#include "app/base/ports/data_selection.h"
#include "app/base/ports/link_list_window.h"
#include "core/data_records.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/windows_of_database.h"
#include "tests/support/compare_text.h"
#include "tests/support/failure_box.h"
#include "tests/support/troubled_database.h"
#include "tests/support/window_world.h"
#include "ui/data/frmMainData.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QDir>
#include <QFile>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestOpeningFiles : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowWorld> world;
    frmMainMenu* window = nullptr;
    ReportList* list = nullptr;

    QString status() const { return WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(1); }
    void write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }
    QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void expectFailure(qint32 number) { expectFailure(standardDescription(number)); }
    void expectFailure(const QString& description)
    {
        world->dialogs.expect(MessageBox{
            .text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "_s +
                    description,
            .title = u"Quillon 障害対策部"_s});
    }
    void expectNotFound()
    {
        world->dialogs.expect(MessageBox{.text = u"指定されたファイルが見つかりません。"_s,
                                         .title = u"Quillon データ調査分析部"_s});
    }
    /// A database with one definition of this name.
    QString databaseWith(const QString& fileName, const QString& name)
    {
        const QString path = world->createDatabase(fileName);
        const auto database = Database::open(path);
        WindowWorld::addRow(RecordSet::openTable(database, schema::Main()),
                            {name, u"M-991231-001"_s, u"定義"_s});
        return path;
    }

    /// A database before, with a window whose text was changed.
    frmMainData* openEdited()
    {
        window->openChosenFile(databaseWith(u"前.mdb"_s, u"水"_s));
        ShowData(world->session(), u"M-991231-001"_s);
        auto* edited = world->window<frmMainData>(u"frmMainData"_s);
        edited->setFieldText(2, u"新しい"_s);
        return edited;
    }
    static MessageBox updated() { return {.text = u"本データを更新しました。"_s, .title = u"定義"_s}; }
    static MessageBox closingQuestion()
    {
        return {.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel};
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        window = &world->mainWindow();
        list = WindowWorld::control<ReportList>(*window, u"lsvData"_s);
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        // The program has gone on: a good file opens.
        window->openChosenFile(databaseWith(u"最後.mdb"_s, u"水"_s));
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        QCOMPARE(list->rows().rowCount(), 1);
        QVERIFY(compareText(status(), u"データベース (最後.mdb)が展開されています｡ "));
        world.reset();
    }

    void textFileIsNoDatabase()
    {
        const QString path = world->folder.filePath(u"memo.mdb"_s);
        write(path, QByteArray("これはテキストです。\r\n").repeated(500));
        expectFailure(errors::NotADatabase);
        window->openChosenFile(path);
        QVERIFY(compareText(status(), u"データベース : memo.mdb を展開中です。"));
    }

    void emptyFileIsNoDatabase()
    {
        const QString path = world->folder.filePath(u"空.mdb"_s);
        write(path, {});
        expectFailure(Database::emptyFile().description);
        window->openChosenFile(path);
        QCOMPARE(QFileInfo(path).size(), 0); // nothing was written into it
    }

    void folderIsNotFound()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"棚"_s));
        expectNotFound();
        window->openChosenFile(world->folder.filePath(u"棚"_s));
    }

    void pipeIsNotFoundAndDoesNotBlock()
    {
#ifdef Q_OS_UNIX
        const QString path = world->folder.filePath(u"管"_s);
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        expectNotFound();
        window->openChosenFile(path);
#else
        QSKIP("There are no such files here.");
#endif
    }

    void truncatedFileIsReported()
    {
        const QString path = databaseWith(u"切.mdb"_s, u"水"_s);
        const QByteArray bytes = read(path);
        for (const qsizetype kept : {bytes.size() - 4096, bytes.size() / 2, qsizetype(100), qsizetype(16)}) {
            write(path, bytes.left(kept));
            expectFailure(errors::NotADatabase);
            window->openChosenFile(path);
            QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        }
    }

    void brokenHeaderIsReported()
    {
        const QString path = databaseWith(u"壊.mdb"_s, u"水"_s);
        QByteArray bytes = read(path);
        bytes[3] = static_cast<char>(bytes[3] ^ 0x40);
        write(path, bytes);
        expectFailure(errors::NotADatabase);
        window->openChosenFile(path);
    }

    void brokenDataPageIsReported()
    {
        const QString path = databaseWith(u"頁.mdb"_s, u"水"_s);
        QByteArray bytes = read(path);
        bytes.replace(4096, 4096, QByteArray(4096, '\x5A')); // the second page is the root of the first table
        write(path, bytes);
        expectFailure(u"データベースが壊れているため、テーブル Main を読み取れませんでした。"
                      u"控えのファイルを展開してください。"_s);
        window->openChosenFile(path);
        QCOMPARE(list->rows().rowCount(), 0);
        QVERIFY(compareText(status(), u"定義データテーブルを展開中です。"));
    }

    void foreignTablesAreReported()
    {
        const QString path = world->folder.filePath(u"他.mdb"_s);
        Database::create(path)->execute(u"CREATE TABLE Customers (Id INTEGER, Name TEXT)"_s);
        expectFailure(errors::TableNotFound);
        window->openChosenFile(path);
    }

    void lackingTableIsReported()
    {
        const QString path = databaseWith(u"欠.mdb"_s, u"水"_s);
        Database::open(path)->execute(u"DROP TABLE Link"_s);
        expectFailure(errors::TableNotFound);
        window->openChosenFile(path);
        QVERIFY(compareText(status(), u"リンク情報テーブルを展開中です。"));
    }

    void lackingFieldIsReported()
    {
        const QString path = databaseWith(u"欄.mdb"_s, u"水"_s);
        Database::open(path)->execute(u"ALTER TABLE RefDoc RENAME COLUMN Explanation TO Other"_s);
        expectFailure(errors::UnknownField);
        window->openChosenFile(path);
    }

    void lockedFileIsReported()
    {
        const QString path = databaseWith(u"鍵.mdb"_s, u"水"_s);
        const auto other = Database::open(path);
        other->connection().execute(u"BEGIN EXCLUSIVE"_s);
        expectFailure(errors::Locked);
        window->openChosenFile(path);
        other->connection().execute(u"ROLLBACK"_s);
    }

    void readOnlyFolderIsReported()
    {
#ifdef Q_OS_UNIX
        const QString folder = world->folder.filePath(u"読取専用"_s);
        QVERIFY(QDir().mkdir(folder));
        const QString path = databaseWith(u"読取専用/db.mdb"_s, u"水"_s);
        QVERIFY(QFile::setPermissions(world->folder.path(), QFile::Permissions(0x7755)));
        QVERIFY(QFile::setPermissions(path, QFile::Permissions(0x6666)));
        QVERIFY(QFile::setPermissions(folder, QFile::Permissions(0x5555)));
        // The administrator may write anywhere; so the file is opened as nobody.
        const bool administrator = geteuid() == 0;
        if (administrator)
            QCOMPARE(seteuid(65534), 0);
        expectFailure(errors::CannotOpen);
        window->openChosenFile(path);
        if (administrator)
            QCOMPARE(seteuid(0), 0);
        QVERIFY(QFile::setPermissions(folder, QFile::Permissions(0x7755)));
#else
        QSKIP("Rights are set otherwise here.");
#endif
    }

    void failedOpeningKeepsTheDatabaseBefore()
    {
        window->openChosenFile(databaseWith(u"前.mdb"_s, u"水"_s));
        const auto before = world->session().OpenDb;
        const QString path = world->folder.filePath(u"空.mdb"_s);
        write(path, {});
        expectFailure(Database::emptyFile().description);
        window->openChosenFile(path);
        QCOMPARE(world->session().OpenDb, before);
        QCOMPARE(list->rows().rowCount(), 0); // cleared at the beginning
        QVERIFY(compareText(WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(2),
                            u"表示データ数 ： 0"));
    }

    void failedOpeningKeepsTheWindowsOfTheDatabaseBefore()
    {
        frmMainData* edited = openEdited();
        const QString path = databaseWith(u"欠.mdb"_s, u"火"_s);
        Database::open(path)->execute(u"DROP TABLE Link"_s);
        expectFailure(errors::TableNotFound);
        window->openChosenFile(path);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        world->dialogs.expect(updated());
        QVERIFY(WindowWorld::choose(*edited, u"mnuDataUpdate"_s));
        QCOMPARE(WindowWorld::rowsOf(world->session().RsMain), QStringList(u"水|M-991231-001|新しい"_s));
    }

    void cancelledQuestionKeepsEverything()
    {
        frmMainData* edited = openEdited();
        list->rows().sortByColumn(0);
        list->selectRow(0);
        const QString statusBefore = status();
        const auto before = world->session().OpenDb;
        world->dialogs.expect(closingQuestion(), Answer::Cancel);
        window->openChosenFile(databaseWith(u"後.mdb"_s, u"火"_s));
        QCOMPARE(world->session().OpenDb, before);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        QCOMPARE(list->rows().rowCount(), 1);
        QVERIFY(compareText(list->rows().text(0, 0), u"水"));
        QCOMPARE(list->selectedRows(), std::vector<int>{0});
        QVERIFY(compareText(status(), statusBefore));
        QVERIFY(compareText(WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(2),
                            u"表示データ数 ： 1"_s));
        QVERIFY(compareText(window->nodeText(window->selectedNodeIndex()), u"形式別(全データ)"));
        // A dialog cancelled afterwards opens the present file again, not the one that was declined.
        world->dialogs.expect(FileDialog{.purpose = FileDialog::Purpose::Open,
                                         .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                                         .fileName = before->path(),
                                         .folder = world->folder.path()},
                              std::nullopt);
        window->mnuFileOpen_Click();
        QCOMPARE(world->session().OpenDb->path(), before->path());
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        world->dialogs.expect(closingQuestion(), Answer::No);
        QVERIFY(edited->unload());
    }

    void noWindowGoesBeforeAllHaveAnswered()
    {
        frmMainData* first = openEdited();
        WindowWorld::addRow(world->session().RsMain, {u"氷"_s, u"M-991231-002"_s, u"固体"_s});
        WindowWorld::addRow(world->session().RsMain, {u"湯"_s, u"M-991231-003"_s, u"熱い"_s});
        ShowData(world->session(), u"M-991231-002"_s);
        auto* second = world->window<frmMainData>(u"frmMainData"_s, 1);
        second->setFieldText(2, u"冷たい"_s);
        ShowData(world->session(), u"M-991231-003"_s);
        auto* third = world->window<frmMainData>(u"frmMainData"_s, 2);
        third->setFieldText(2, u"ぬるい"_s);
        const QString path = databaseWith(u"後.mdb"_s, u"火"_s);
        world->dialogs.expect(closingQuestion(), Answer::No);
        world->dialogs.expect(closingQuestion(), Answer::Yes);
        world->dialogs.expect(updated());
        world->dialogs.expect(closingQuestion(), Answer::Cancel);
        window->openChosenFile(path);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 3);
        QVERIFY(first->isVisible());
        QVERIFY(compareText(first->fieldText(2), u"新しい"));
        QVERIFY(compareText(third->fieldText(2), u"ぬるい"));
        QCOMPARE(
            WindowWorld::rowsOf(world->session().RsMain),
            QStringList({u"水|M-991231-001|定義"_s, u"氷|M-991231-002|冷たい"_s, u"湯|M-991231-003|熱い"_s}));
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        // What was saved is not asked about any more; whoever answered before is asked again, and only once.
        world->dialogs.expect(closingQuestion(), Answer::No);
        world->dialogs.expect(closingQuestion(), Answer::No);
        window->openChosenFile(path);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 0);
        QVERIFY(compareText(list->rows().text(0, 0), u"火"));
    }

    void fileRegisteredInAClosingQuestionIsNotRegisteredTwice()
    {
        frmMainData* edited = openEdited();
        Session& session = world->session();
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        write(world->folder.filePath(u"図.png"_s), "PNG");
        CreateRegisterForm(session, u"F"_s);
        auto* entry = dynamic_cast<DataWindow*>(world->window<FormWindow>(u"frmRefFileEntry"_s));
        entry->setFieldText(0, world->folder.filePath(u"図.png"_s));
        WindowWorld::addRow(session.RsMain, {u"氷"_s, u"M-991231-002"_s, u"固体"_s});
        ShowData(session, u"M-991231-002"_s);
        world->window<frmMainData>(u"frmMainData"_s, 1)->setFieldText(2, u"冷たい"_s);
        world->dialogs.expect(closingQuestion(), Answer::No);
        world->dialogs.expect(MessageBox{.text = u"現在のデータを登録しますか。"_s,
                                         .title = u"Quillon ファイルデータ管理部"_s,
                                         .buttons = Buttons::YesNoCancel},
                              Answer::Yes);
        world->dialogs.expect(MessageBox{.text = u"本データを登録しました。"_s, .title = u"FILE"_s});
        world->dialogs.expect(closingQuestion(), Answer::Cancel);
        window->openChosenFile(databaseWith(u"後.mdb"_s, u"火"_s));
        QCOMPARE(world->windowCount(u"frmMainData"_s), 2);
        QVERIFY(edited->isVisible());
        QCOMPARE(WindowWorld::rowsOf(session.RsRefFile), QStringList(u"図.png|F-991231-001|未入力"_s));
        QVERIFY(entry->unload()); // it asks nothing
        for (int i = 0; i < 2; ++i)
            world->dialogs.expect(closingQuestion(), Answer::No);
        QVERIFY(CloseDataWindows(session));
    }

    void lockedDatabaseBeforeKeepsNoOtherFromBeingOpened()
    {
        frmMainData* edited = openEdited();
        const QString path = databaseWith(u"後.mdb"_s, u"火"_s);
        const auto before = world->session().OpenDb;
        {
            const ForeignLock lock(*before, ForeignLock::Kind::Exclusive);
            const QString statusBefore = status();
            world->dialogs.expect(closingQuestion(), Answer::Yes);
            world->dialogs.expect(untrapped(errors::Locked));
            window->openChosenFile(path);
            QCOMPARE(world->session().OpenDb, before);
            QVERIFY(compareText(edited->fieldText(2), u"新しい"));
            QCOMPARE(list->rows().rowCount(), 1);
            QVERIFY(compareText(status(), statusBefore));
            world->dialogs.expect(closingQuestion(), Answer::No);
            window->openChosenFile(path);
        }
        QCOMPARE(world->windowCount(u"frmMainData"_s), 0);
        QVERIFY(compareText(list->rows().text(0, 0), u"火"));
    }

    void savedAnswerIsWrittenToTheDatabaseBefore()
    {
        openEdited();
        const QString before = world->session().OpenDb->path();
        world->dialogs.expect(closingQuestion(), Answer::Yes);
        world->dialogs.expect(updated());
        window->openChosenFile(databaseWith(u"後.mdb"_s, u"火"_s));
        QCOMPARE(world->windowCount(u"frmMainData"_s), 0);
        QVERIFY(compareText(list->rows().text(0, 0), u"火"));
        const auto database = Database::open(before);
        QCOMPARE(WindowWorld::rowsOf(RecordSet::openTable(database, schema::Main())),
                 QStringList(u"水|M-991231-001|新しい"_s));
    }

    void listsOfTheDatabaseBeforeAreClosed()
    {
        window->openChosenFile(databaseWith(u"前.mdb"_s, u"水"_s));
        for (const QString& name : {u"frmEntryInfo"_s, u"frmFind"_s})
            world->session().windows.showAuxiliary(name);
        world->session().windows.dataSelection().showModeless();
        world->session().windows.linkList().showModeless();
        world->session().windows.categoryChooser().showModeless();
        window->openChosenFile(databaseWith(u"後.mdb"_s, u"火"_s));
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, u"frmFind"_s}));
    }

    void awkwardPathsOpen_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blanks") << u"a b  c.mdb"_s;
        QTest::newRow("quotes") << u"it's \"the\" `db`.mdb"_s;
        QTest::newRow("japanese") << u"知識ベース（第２版）.mdb"_s;
        QTest::newRow("leading dash") << u"-rf.mdb"_s;
        QTest::newRow("percent and question mark") << u"100%?mode=ro#x.mdb"_s;
        QTest::newRow("like an address") << u"file:x.mdb"_s;
        QTest::newRow("backslash") << u"a\\b.mdb"_s;
        QTest::newRow("no extension") << u"データ"_s;
    }

    void awkwardPathsOpen()
    {
#ifdef Q_OS_UNIX
        QFETCH(QString, name);
        window->openChosenFile(databaseWith(name, u"水"_s));
        QCOMPARE(list->rows().rowCount(), 1);
        QVERIFY(compareText(status(), u"データベース ("_s + name + u")が展開されています｡ "_s));
        world->session().OpenDb->connection().execute(u"UPDATE Main SET Name = '火'"_s);
#else
        QSKIP("Such names are not allowed here.");
#endif
    }

    void olderLayoutIsConvertedOnce()
    {
        const QString path = databaseWith(u"旧.mdb"_s, u"水"_s);
        {
            const auto database = Database::open(path);
            database->execute(u"DROP TABLE Category"_s);
            database->execute(u"DROP TABLE Category_ID"_s);
        }
        world->dialogs.expect(MessageBox{
            .text = u"カテゴリ情報テーブルが存在しませんでした。\r\nカテゴリテーブルを作成します。"_s,
            .title = u"データベースコンバート処理"_s});
        window->openChosenFile(path);
        QCOMPARE(list->rows().rowCount(), 1);
        QCOMPARE(window->nodeCount(), 9);
        window->openChosenFile(path); // the second time without a message
        QCOMPARE(list->rows().rowCount(), 1);
    }

    void everyNullIsSurvived()
    {
        const QString path = world->createDatabase(u"null.mdb"_s);
        {
            const auto database = Database::open(path);
            for (const TableSchema* table : schema::all()) {
                const QString nulls = table->fields.size() == 3 ? u"NULL, NULL, NULL"_s : u"NULL, NULL"_s;
                for (int i = 0; i < 2; ++i)
                    database->connection().execute(u"INSERT INTO "_s + table->name + u" VALUES ("_s + nulls +
                                                   u")"_s);
            }
        }
        window->openChosenFile(path);
        QCOMPARE(list->rows().rowCount(), 6);
        QCOMPARE(window->nodeCount(), 11);
        auto* tree = WindowWorld::control<KeyedTree>(*window, u"tvwCategory"_s);
        for (int position = 1; position <= window->nodeCount(); ++position) {
            tree->select(position);
            window->tvwCategory_NodeClick(position);
        }
    }

    void wideTextsOfAnotherWriterAreShownWhole()
    {
        const QString path = world->createDatabase(u"wide.mdb"_s);
        {
            const auto database = Database::open(path);
            database->connection().execute(
                u"INSERT INTO Main VALUES (replace(hex(zeroblob(60000)), '00', '長い'), 'M-991231-001', 'x')"_s);
        }
        window->openChosenFile(path);
        QCOMPARE(list->rows().text(0, 0).size(), 120000);
    }
};

QTEST_MAIN(TestOpeningFiles)
#include "test_opening_files.moc"
