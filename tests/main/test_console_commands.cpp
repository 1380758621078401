// The console's commands that do what menu entries do, with and without a database.
#include "app/base/ports/data_window.h"
#include "tests/main/main_window_fixture.h"
#include "tests/support/failure_box.h"

#include <QFile>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestConsoleCommands : public MainWindowFixture
{
    Q_OBJECT

    void expectConsole(const QString& answer) const
    {
        world->dialogs.expect(InputBox{.prompt = u"システムコマンドを入力してください。\r\n"
                                                 u"本画面は基本的にデバック用の画面です。"
                                                 u"公開コマンドは CMDLIST で表示できます。"_s,
                                       .title = u"システムコマンド入力画面 "
                                                u"Quillon 開発者 / ARDO VENTRIS"_s},
                              answer);
    }
    /// What the console has been told to expect happens now.
    void pressChord() const
    {
        QTest::keyClick(window->windowHandle(), Qt::Key_Escape, Qt::ShiftModifier);
        WindowWorld::processEvents();
    }
    void expectFileDialog(FileDialog::Purpose purpose, const QString& fileName, const QString& folder,
                          const std::optional<QString>& answer) const
    {
        world->dialogs.expect(FileDialog{.purpose = purpose,
                                         .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                                         .fileName = fileName,
                                         .folder = folder,
                                         .promptBeforeOverwriting = purpose == FileDialog::Purpose::Save},
                              answer);
    }
    void bothSpellings(const QString& command)
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("upper case") << command;
        QTest::newRow("lower case") << command.toLower();
    }

private Q_SLOTS:
    void init() { makeWindow(); }
    void cleanup() { endWorld(); }

    void newCreatesADatabase_data() { bothSpellings(u"NEW"_s); }

    void newCreatesADatabase()
    {
        QFETCH(QString, typed);
        const QString path = world->folder.filePath(u"新.mdb"_s);
        expectConsole(typed);
        expectFileDialog(FileDialog::Purpose::Save, {}, world->folder.path(), path);
        expectNotice(u"Quillon 用のデータベースを作成しました。"_s);
        pressChord();
        QVERIFY(QFile::exists(path));
        QCOMPARE(window->nodeCount(), 9);
    }

    void openOpensADatabase_data() { bothSpellings(u"OPEN"_s); }

    void openOpensADatabase()
    {
        QFETCH(QString, typed);
        expectConsole(typed);
        expectFileDialog(FileDialog::Purpose::Open, {}, {}, std::nullopt);
        pressChord();
        QVERIFY(!session().OpenDb);
        const QString path = world->createDatabase();
        expectConsole(typed);
        expectFileDialog(FileDialog::Purpose::Open, {}, world->folder.path(), path);
        pressChord();
        QVERIFY(session().OpenDb);
        QCOMPARE(window->nodeCount(), 9);
    }

    void openTellsOfAMissingFile()
    {
        expectConsole(u"OPEN"_s);
        expectFileDialog(FileDialog::Purpose::Open, {}, {}, world->folder.filePath(u"無い.mdb"_s));
        expectNotice(u"指定されたファイルが見つかりません。"_s, u"Quillon データ調査分析部"_s);
        pressChord();
    }

    void entriesOpenARegistration_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("opened");
        QTest::addColumn<QString>("identifier");
        QTest::newRow("definition") << u"ENTRY/M"_s << u"frmMainData"_s << u"M-991231-006"_s;
        QTest::newRow("definition, lower case") << u"entry/m"_s << u"frmMainData"_s << u"M-991231-006"_s;
        QTest::newRow("document") << u"ENTRY/R"_s << u"frmRefDoc"_s << u"R-991231-002"_s;
        QTest::newRow("document, lower case") << u"entry/r"_s << u"frmRefDoc"_s << u"R-991231-002"_s;
    }

    void entriesOpenARegistration()
    {
        QFETCH(QString, typed);
        QFETCH(QString, opened);
        QFETCH(QString, identifier);
        openSampleDatabase();
        expectConsole(typed);
        pressChord();
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, opened}));
        const auto* form = world->window<DataWindow>(opened);
        QVERIFY(compareText(modeOf(opened), u"登録モード"));
        QCOMPARE(form->fieldText(1), identifier);
    }

    void entriesWithoutADatabaseOpenNoWindow_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("opened");
        QTest::newRow("definition") << u"ENTRY/M"_s << u"frmMainData"_s;
        QTest::newRow("document") << u"ENTRY/R"_s << u"frmRefDoc"_s;
    }

    void entriesWithoutADatabaseOpenNoWindow()
    {
        QFETCH(QString, typed);
        QFETCH(QString, opened);
        expectConsole(typed);
        expectFailure(u"ExistCheck"_s, errors::ObjectNotSet); // once, however many numbers there are
        pressChord();
        QCOMPARE(world->windowCount(opened), 0); // nothing can be registered without an identifier
        QCOMPARE(world->eventLog.lines.size(), 1);
    }

    void caddRegistersACategory_data() { bothSpellings(u"CADD"_s); }

    void caddRegistersACategory()
    {
        QFETCH(QString, typed);
        openSampleDatabase();
        chooseNode(u"B"_s);
        expectConsole(typed);
        expectQuestion(u"乙の下に新規のカテゴリを登録しますか。"_s, Answer::Ok);
        world->dialogs.expect(InputBox{.prompt = u"カテゴリ名を入力してください。"_s}, u"乙の一"_s);
        pressChord();
        QCOMPARE(categories().last(), u"B-A|乙の一"_s);
        QCOMPARE(nodeTexts().last(), u"B-A=乙の一"_s);
    }

    void caddWithoutADatabaseIsReportedUnderItsMenuEntry()
    {
        expectConsole(u"CADD"_s); // there is no selected node to read
        world->dialogs.expect(
            failureBox(u"mnuCategoryEntry_Click"_s, u"カテゴリツリーの項目が選択されていません。"_s));
        pressChord();
        QCOMPARE(window->nodeCount(), 0);
        QCOMPARE(world->eventLog.lines.size(), 1);
    }

    void cdelDeletesACategory_data() { bothSpellings(u"CDEL"_s); }

    void cdelDeletesACategory()
    {
        QFETCH(QString, typed);
        openSampleDatabase();
        expectConsole(typed);
        expectNotice(u"カテゴリが選択されていません。"_s);
        pressChord();
        chooseNode(u"A"_s);
        expectConsole(typed);
        expectNotice(u"サブカテゴリが存在します。先にサブカテゴリを削除して下さい。"_s);
        pressChord();
        chooseNode(u"B"_s);
        expectConsole(typed);
        expectQuestion(u"<乙> を削除しますか。"_s, Answer::Ok);
        pressChord();
        QCOMPARE(categories(), QStringList({u"A|甲"_s, u"A-A|甲の一"_s, u"A-B|甲の二"_s}));
        QCOMPARE(window->nodeCount(), 12);
    }

    void cdelWithoutADatabaseIsToldByTheConsole()
    {
        expectConsole(u"CDEL"_s);
        expectNotice(
            u"対処不能なエラーが発生しました。\r\n説明：カテゴリツリーの項目が選択されていません。"_s);
        pressChord();
        QVERIFY(world->eventLog.lines.isEmpty());
    }

    void infoShowsTheLinks_data() { bothSpellings(u"INFO/L"_s); }

    void infoShowsTheLinks()
    {
        QFETCH(QString, typed);
        openSampleDatabase();
        expectConsole(typed);
        expectNotice(u"リンクは存在しません。"_s, u"Quillon リンク情報管理部"_s);
        pressChord();
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
        WindowWorld::addRow(session().RsLink, {u"M-991231-001"_s, u"M-991231-002"_s});
        expectConsole(typed);
        pressChord();
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, u"frmLinkList"_s}));
        QVERIFY(world->window<FormWindow>(u"frmLinkList"_s)->isVisible());
    }

    void linksWithoutADatabaseAreAFailure()
    {
        expectConsole(u"INFO/L"_s);
        expectFailure(u"CloseAllForm"_s, errors::ObjectNotSet);
        pressChord();
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
        QVERIFY(world->eventLog.lines.last().contains(u", LOCATION : CloseAllForm, ErrorNumber : 91, "_s));
    }

    void infoShowsTheStatistics_data() { bothSpellings(u"INFO/E"_s); }

    void infoShowsTheStatistics()
    {
        QFETCH(QString, typed);
        // Without a database, too: there it counts nothing.
        for (const bool withDatabase : {false, true}) {
            if (withDatabase)
                openSampleDatabase();
            expectConsole(typed);
            pressChord();
            auto* form = world->window<FormWindow>(u"frmEntryInfo"_s);
            QVERIFY(form != nullptr);
            QVERIFY(form->isVisible());
            QVERIFY(form->unload());
            WindowWorld::processEvents();
        }
    }

    void endAsksAndMayBeRefused_data() { bothSpellings(u"END"_s); }

    void endAsksAndMayBeRefused()
    {
        QFETCH(QString, typed);
        const MessageBox question{.text = u"Quillonを終了しますか。"_s,
                                  .title = u"Quillon システム運用部"_s,
                                  .buttons = Buttons::OkCancel};
        expectConsole(typed);
        world->dialogs.expect(question, Answer::Cancel);
        pressChord();
        QVERIFY(window->isVisible());
        QCOMPARE(world->ends, 0);
        expectConsole(typed);
        world->dialogs.expect(question, Answer::Ok);
        QTest::keyPress(window->windowHandle(), Qt::Key_Escape, Qt::ShiftModifier);
        QCOMPARE(world->ends, 1);
    }

    void nodeThatIsGoneByThenIsTheConsolesFailure()
    {
        openSampleDatabase();
        chooseNode(u"B"_s);
        // The node is gone from the tree by the time the command is carried out.
        expectConsole(u"CID"_s);
        world->dialogs.meanwhile([this] { tree->nodes().clear(); });
        expectNotice(u"対処不能なエラーが発生しました。\r\n説明："
                     u"カテゴリツリーの項目が選択されていません。"_s);
        pressChord();
        QVERIFY(world->eventLog.lines.isEmpty());
    }
};

QTEST_MAIN(TestConsoleCommands)
#include "test_console_commands.moc"
