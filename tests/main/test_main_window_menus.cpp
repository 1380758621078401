// The menu bar of the main window: names, captions, order, enabling and what the entries do.
#include "store/database.h"
#include "store/record_set.h"
#include "store/session.h"
#include "tests/support/compare_text.h"
#include "tests/support/window_world.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QAction>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// A menu as lines "name|caption", separators as "name|-", submenus indented.
void describe(const QList<QAction*>& actions, const QString& indent, QStringList& lines)
{
    for (const QAction* action : actions) {
        const QString name = action->menu() != nullptr ? action->menu()->objectName() : action->objectName();
        lines << indent + name + u'|' + (action->isSeparator() ? u"-"_s : action->text());
        if (action->menu() != nullptr)
            describe(action->menu()->actions(), indent + u"  "_s, lines);
    }
}

} // namespace

class TestMainWindowMenus : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowWorld> world;
    frmMainMenu* window = nullptr;

    bool enabled(const QString& name) const { return WindowWorld::entry(*window, name)->isEnabled(); }
    void expectOpenDialog(const QString& fileName, const QString& folder,
                          const std::optional<QString>& answer)
    {
        world->dialogs.expect(FileDialog{.purpose = FileDialog::Purpose::Open,
                                         .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                                         .fileName = fileName,
                                         .folder = folder,
                                         .promptBeforeOverwriting = false},
                              answer);
    }
    void expectSaveDialog(const std::optional<QString>& answer)
    {
        world->dialogs.expect(FileDialog{.purpose = FileDialog::Purpose::Save,
                                         .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                                         .fileName = {},
                                         .folder = world->folder.path(),
                                         .promptBeforeOverwriting = true},
                              answer);
    }
    void createEmptyFile(const QString& name) const
    {
        QFile file(world->folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QString status(int panel) const
    {
        return WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(panel);
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        window = &world->mainWindow();
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void entriesStandInOrderWithTheirCaptions()
    {
        QStringList lines;
        describe(window->menuBar()->actions(), {}, lines);
        const QStringList expected = {u"mnuFile|ファイル(&F)"_s,
                                      u"  mnuFileNew|新規データベース作成(&N)"_s,
                                      u"  mnuFileOpen|既存データベース展開(&O)"_s,
                                      u"  mnuFileLine|-"_s,
                                      u"  mnuEnd|システム終了(&E)"_s,
                                      u"mnuData|データ(&D)"_s,
                                      u"  mnuEntry|新規データ登録(&E)"_s,
                                      u"    mnuEntryMain|定義データ(&M)"_s,
                                      u"    mnuEntryRefDoc|文献データ(&R)"_s,
                                      u"    mnuEntryRefFile|ファイルデータ(&Ｆ)"_s,
                                      u"  mnuDataView|データ表示(&V)"_s,
                                      u"  mnuDataCategoryDelete|分類を解除(&C)"_s,
                                      u"  mnuDataCloseAll|全画面を閉じる(&A)"_s,
                                      u"  mnuDataLine|-"_s,
                                      u"  mnuDataDelete|データ削除(&D)"_s,
                                      u"mnuCategory|カテゴリ(&C)"_s,
                                      u"  mnuCategoryEntry|新規カテゴリ登録(&E)"_s,
                                      u"  mnuCategoryDelete|カテゴリ削除(&D)"_s,
                                      u"  mnuCategoryRename|名称変更(&R)"_s,
                                      u"mnuFind|検索(&F)"_s,
                                      u"  mnuFindName|全文検索(&D)"_s,
                                      u"mnuInfo|情報(&I)"_s,
                                      u"  mnuInfoLink|データリンク状況の表示(&L)"_s,
                                      u"  mnuInfoCategory|データ分類状況の表示(&C)"_s,
                                      u"  mnuInfoEntry|データ登録状況の表示(&E)"_s,
                                      u"  mnuInfoLine|-"_s,
                                      u"  mnuInfoReadme|Readme.txt (&R)"_s,
                                      u"  mnuInfoRef|機能仕様書.txt (&F)"_s,
                                      u"  mnuInfoSystem|システム情報 (&S)"_s};
        QCOMPARE(lines, expected);
    }

    void databaseEntriesAreDisabledWithoutADatabase()
    {
        for (const QString& name : {u"mnuData"_s, u"mnuCategory"_s, u"mnuFind"_s, u"mnuInfoLink"_s,
                                    u"mnuInfoCategory"_s, u"mnuInfoEntry"_s})
            QVERIFY2(!enabled(name), qPrintable(name));
        for (const QString& name : {u"mnuFile"_s, u"mnuFileNew"_s, u"mnuFileOpen"_s, u"mnuEnd"_s,
                                    u"mnuInfo"_s, u"mnuInfoReadme"_s, u"mnuInfoRef"_s, u"mnuInfoSystem"_s})
            QVERIFY2(enabled(name), qPrintable(name));
    }

    void openingEnablesAllButTheClassificationReport()
    {
        world->open(world->createDatabase());
        for (const QString& name : {u"mnuData"_s, u"mnuCategory"_s, u"mnuFind"_s, u"mnuInfo"_s,
                                    u"mnuInfoLink"_s, u"mnuInfoEntry"_s})
            QVERIFY2(enabled(name), qPrintable(name));
        QVERIFY(!enabled(u"mnuInfoCategory"_s));
    }

    void failedOpeningEnablesNothing()
    {
        createEmptyFile(u"空.mdb"_s);
        world->dialogs.expect(MessageBox{
            .text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "_s +
                    Database::emptyFile().description,
            .title = u"Quillon 障害対策部"_s});
        window->openChosenFile(world->folder.filePath(u"空.mdb"_s));
        QVERIFY(!enabled(u"mnuData"_s));
    }

    void newDatabaseIsCreatedOpenedAndEmpty()
    {
        const QString path = world->folder.filePath(u"新しい 'データ'.mdb"_s);
        expectSaveDialog(path);
        world->dialogs.expect(
            MessageBox{.text = u"Quillon 用のデータベースを作成しました。"_s, .title = u"Quillon"_s});
        QVERIFY(WindowWorld::choose(*window, u"mnuFileNew"_s));
        QVERIFY(QFile::exists(path));
        QVERIFY(enabled(u"mnuData"_s));
        QCOMPARE(window->nodeCount(), 9);
        QVERIFY(compareText(status(1), u"データベース (新しい 'データ'.mdb)が展開されています｡ "));
        QVERIFY(compareText(status(2), u"表示データ数 ： ")); // no list has been filled
    }

    void cancelledNewDialogIsSilent()
    {
        expectSaveDialog(std::nullopt);
        QVERIFY(WindowWorld::choose(*window, u"mnuFileNew"_s));
        QVERIFY(!enabled(u"mnuData"_s));
    }

    void existingFileIsNeverReplaced()
    {
        const QString path = world->createDatabase();
        const qint64 size = QFileInfo(path).size();
        expectSaveDialog(path);
        world->dialogs.expect(MessageBox{.text = u"Quillon ではデータベースの上書き作成を承認できません。"_s,
                                         .title = u"Quillon システム監査部"_s});
        QVERIFY(WindowWorld::choose(*window, u"mnuFileNew"_s));
        QCOMPARE(QFileInfo(path).size(), size);
        QVERIFY(!enabled(u"mnuData"_s));
    }

    void creationThatWasBrokenOffIsDoneAgain()
    {
        const QString path = world->folder.filePath(u"半.mdb"_s);
        QVERIFY(QFile(path).open(QIODevice::WriteOnly));
        expectSaveDialog(path);
        world->dialogs.expect(MessageBox{.text = u"Quillon 用のデータベースを作成しました。"_s});
        QVERIFY(WindowWorld::choose(*window, u"mnuFileNew"_s));
        QVERIFY(enabled(u"mnuData"_s));
    }

    void folderOfThatNameIsRefusedToo()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"棚.mdb"_s));
        expectSaveDialog(world->folder.filePath(u"棚.mdb"_s));
        world->dialogs.expect(MessageBox{.text = u"Quillon ではデータベースの上書き作成を承認できません。"_s,
                                         .title = u"Quillon システム監査部"_s});
        QVERIFY(WindowWorld::choose(*window, u"mnuFileNew"_s));
    }

    void creatingInAMissingFolderIsReported()
    {
        expectSaveDialog(world->folder.filePath(u"無い/db.mdb"_s));
        world->dialogs.expect(MessageBox{
            .text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "_s +
                    standardDescription(errors::PathNotFound),
            .title = u"Quillon 障害対策部"_s});
        QVERIFY(WindowWorld::choose(*window, u"mnuFileNew"_s));
        QVERIFY(!enabled(u"mnuData"_s));
    }

    void firstOpenDialogHasNoFolderAndLaterOnesTheCurrentOne()
    {
        expectOpenDialog({}, {}, std::nullopt); // never had a name: silent
        QVERIFY(WindowWorld::choose(*window, u"mnuFileOpen"_s));
        expectOpenDialog({}, world->folder.path(), std::nullopt);
        QVERIFY(WindowWorld::choose(*window, u"mnuFileOpen"_s));
    }

    void newDialogGivesTheOpenDialogItsFolder()
    {
        expectSaveDialog(std::nullopt);
        QVERIFY(WindowWorld::choose(*window, u"mnuFileNew"_s));
        expectOpenDialog({}, world->folder.path(), std::nullopt);
        QVERIFY(WindowWorld::choose(*window, u"mnuFileOpen"_s));
    }

    void cancelledOpenDialogOpensTheEarlierFileAgain()
    {
        const QString path = world->createDatabase();
        expectOpenDialog({}, {}, path);
        QVERIFY(WindowWorld::choose(*window, u"mnuFileOpen"_s));
        const auto first = world->session().OpenDb;
        QVERIFY(first);
        expectOpenDialog(path, world->folder.path(), std::nullopt);
        QVERIFY(WindowWorld::choose(*window, u"mnuFileOpen"_s));
        QVERIFY(world->session().OpenDb);
        QVERIFY(world->session().OpenDb != first);
    }

    void missingFileIsTold()
    {
        const QString path = world->folder.filePath(u"無い.mdb"_s);
        expectOpenDialog({}, {}, path);
        world->dialogs.expect(MessageBox{.text = u"指定されたファイルが見つかりません。"_s,
                                         .title = u"Quillon データ調査分析部"_s});
        QVERIFY(WindowWorld::choose(*window, u"mnuFileOpen"_s));
        QVERIFY(!QFile::exists(path)); // opening never creates
        QVERIFY(!world->session().OpenDb);
    }

    void textFilesAreOpenedFromTheCurrentFolder()
    {
        createEmptyFile(u"Readme.txt"_s);
        createEmptyFile(u"Quillon 機能仕様.txt"_s);
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoReadme"_s));
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoRef"_s));
        QCOMPARE(world->desktop.opened, QStringList({world->folder.filePath(u"Readme.txt"_s),
                                                     world->folder.filePath(u"Quillon 機能仕様.txt"_s)}));
    }

    void outcomeOfOpeningATextFileIsIgnored()
    {
        createEmptyFile(u"Readme.txt"_s);
        world->desktop.outcome = OpenOutcome::NoAssociation;
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoReadme"_s));
    }

    void missingTextFilesAreTold()
    {
        world->dialogs.expect(MessageBox{.text = u"『Readme.txt』が見つかりませんでした。"_s,
                                         .title = u"Quillon システム運用部"_s});
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoReadme"_s));
        world->dialogs.expect(MessageBox{.text = u"『Quillon 機能仕様.txt』が見つかりませんでした。"_s,
                                         .title = u"Quillon システム運用部"_s});
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoRef"_s));
        QVERIFY(world->desktop.opened.isEmpty());
    }

    void endAsksAndCancelKeepsEverything()
    {
        const MessageBox question{.text = u"Quillonを終了しますか。"_s,
                                  .title = u"Quillon システム運用部"_s,
                                  .buttons = Buttons::OkCancel};
        world->dialogs.expect(question, Answer::Cancel);
        QVERIFY(WindowWorld::choose(*window, u"mnuEnd"_s));
        QVERIFY(window->isVisible());
        QCOMPARE(world->ends, 0);
        world->dialogs.expect(question, Answer::Cancel);
        QVERIFY(!window->close());
        QVERIFY(window->isVisible());
        world->dialogs.expect(question, Answer::Ok);
        QVERIFY(WindowWorld::choose(*window, u"mnuEnd"_s));
        QCOMPARE(world->ends, 1);
    }

    void informationWindowsOpenOnce()
    {
        world->open(world->createDatabase());
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoEntry"_s));
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoEntry"_s));
        QCOMPARE(world->windowCount(u"frmEntryInfo"_s), 1);
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoSystem"_s));
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoSystem"_s));
        QCOMPARE(world->windowCount(u"frmSplash"_s), 1);
    }

    void definitionIsRegisteredFromTheMenuAndTheKeyboard()
    {
        world->open(world->createDatabase());
        QVERIFY(WindowWorld::choose(*window, u"mnuEntryMain"_s));
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        auto* list = WindowWorld::control<ReportList>(*window, u"lsvData"_s);
        QTest::keyClick(list, Qt::Key_Insert);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1); // the shared registration window
    }

    void insertDoesNothingBeforeADatabaseIsOpen()
    {
        auto* list = WindowWorld::control<ReportList>(*window, u"lsvData"_s);
        QTest::keyClick(list, Qt::Key_Insert);
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
    }

    void closeAllLeavesTheMainWindow()
    {
        world->open(world->createDatabase());
        QVERIFY(WindowWorld::choose(*window, u"mnuDataCloseAll"_s)); // nothing to close
        QVERIFY(WindowWorld::choose(*window, u"mnuEntryMain"_s));
        QVERIFY(WindowWorld::choose(*window, u"mnuInfoEntry"_s));
        QCOMPARE(world->loadedNames().size(), 3);
        QVERIFY(WindowWorld::choose(*window, u"mnuDataCloseAll"_s));
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
    }
};

QTEST_MAIN(TestMainWindowMenus)
#include "test_main_window_menus.moc"
