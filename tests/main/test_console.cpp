// The console of the main window: its key chord, what it refuses, and its read-outs.
#include "tests/main/main_window_fixture.h"
#include "tests/support/modal_script.h"
#include "tests/support/window_probe.h"
#include "ui/auxiliary/frmCategory.h"
#include "ui/auxiliary/frmDataSelect.h"
#include "ui/auxiliary/frmFind.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const InputBox Console{.prompt = u"システムコマンドを入力してください。\r\n"
                                 u"本画面は基本的にデバック用の画面です。"
                                 u"公開コマンドは CMDLIST で表示できます。"_s,
                       .title = u"システムコマンド入力画面 Quillon 開発者 / ARDO VENTRIS"_s};
const MessageBox Refusal{.text = u"入力されたコマンドは無効です。"_s, .title = u"Quillon システム監査部"_s};

const QString Developer = u"Quillon 開発者 / ARDO VENTRIS"_s;
const QString Intelligence = u"Quillon 諜報部"_s;
const QString PublicMode = u"現在Quillonはパブリックモードで運用中です。"_s;
const QString PrivateMode = u"現在Quillonはプライベートモードで運用中です。"_s;

} // namespace

class TestConsole : public MainWindowFixture
{
    Q_OBJECT

    /// Presses the chord where the focus is.
    void pressChord(Qt::KeyboardModifiers modifiers = Qt::ShiftModifier) const
    {
        QTest::keyClick(window->windowHandle(), Qt::Key_Escape, modifiers);
    }
    /// Opens the console by its chord and answers it; nothing cancels it.
    void command(const std::optional<QString>& text) const
    {
        world->dialogs.expect(Console, text);
        pressChord();
        WindowWorld::processEvents();
    }
    /// A command that shows one box.
    void commandShows(const QString& text, const QString& shown, const QString& title)
    {
        world->dialogs.expect(Console, text);
        expectNotice(shown, title);
        pressChord();
        WindowWorld::processEvents();
    }
    void expectFailureOfItsOwn(const QString& description)
    {
        expectNotice(u"対処不能なエラーが発生しました。\r\n説明："_s + description);
    }
    /// Nine nodes in the category chooser and a definition's window.
    FormWindow& openWaterAmongManyCategories()
    {
        openSampleDatabase();
        for (const QString& name : {u"C"_s, u"D"_s, u"E"_s, u"F"_s})
            WindowWorld::addRow(session().RsCategoryID, {name, u"<"_s + name + u">"_s});
        world->open(session().OpenDb->path());
        selectRow(*list, 0);
        WindowWorld::choose(*window, u"mnuDataView"_s);
        return *world->window<FormWindow>(u"frmMainData"_s);
    }

private Q_SLOTS:
    void init() { makeWindow(); }
    void cleanup() { endWorld(); }

    void chordOpensTheConsoleFromEverywhere_data()
    {
        QTest::addColumn<QString>("focused");
        QTest::addColumn<bool>("withDatabase");
        for (const bool withDatabase : {false, true}) {
            const char* state = withDatabase ? "with" : "without";
            QTest::addRow("tree, %s a database", state) << u"tvwCategory"_s << withDatabase;
            QTest::addRow("list, %s a database", state) << u"lsvData"_s << withDatabase;
            QTest::addRow("no control, %s a database", state) << QString() << withDatabase;
        }
    }

    void chordOpensTheConsoleFromEverywhere()
    {
        QFETCH(QString, focused);
        QFETCH(bool, withDatabase);
        if (withDatabase)
            openSampleDatabase();
        window->focusWidget()->clearFocus();
        if (!focused.isEmpty())
            window->findChild<QWidget*>(focused)->setFocus();
        QCOMPARE(window->focusWidget() == nullptr ? QString() : window->focusWidget()->objectName(), focused);
        const QStringList before = rows();
        for (int time = 0; time < 2; ++time) {
            world->dialogs.expect(Console, u"LIST"_s);
            pressChord();
            QCOMPARE(world->dialogs.takeComplaints(), QStringList()); // once
        }
        QCOMPARE(rows(), before);
    }

    void chordOpensTheConsoleAfterAGrabAtTheSplitter()
    {
        openSampleDatabase();
        auto* splitter = window->findChild<QWidget*>(u"imgSplitter"_s);
        QTest::mouseClick(splitter, Qt::LeftButton);
        world->dialogs.expect(Console, u"LIST"_s);
        pressChord();
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        // What arrives at the splitter itself goes on to the window.
        world->dialogs.expect(Console, u"LIST"_s);
        pressKey(splitter, Qt::Key_Escape, Qt::ShiftModifier);
    }

    void chordOpensTheConsoleFromTheMenuBar()
    {
        QTest::keyClick(window->windowHandle(), Qt::Key_Alt);
        QCOMPARE(window->focusWidget(), window->menuBar());
        QCOMPARE(window->menuBar()->activeAction(), WindowWorld::entry(*window, u"mnuFile"_s));
        world->dialogs.expect(Console, u"LIST"_s);
        pressChord();
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        window->menuBar()->setFocus();
        world->dialogs.expect(Console, u"LIST"_s);
        pressChord();
    }

    void otherKeysOpenNothing_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        const auto add = [](const char* name, Qt::Key key, Qt::KeyboardModifiers modifiers) {
            QTest::newRow(name) << key << modifiers;
        };
        add("Esc alone", Qt::Key_Escape, Qt::NoModifier);
        add("with Ctrl", Qt::Key_Escape, Qt::ControlModifier);
        add("with Alt", Qt::Key_Escape, Qt::AltModifier);
        add("with Ctrl and Shift", Qt::Key_Escape, Qt::ControlModifier | Qt::ShiftModifier);
        add("with Alt and Shift", Qt::Key_Escape, Qt::AltModifier | Qt::ShiftModifier);
        add("with Ctrl, Alt and Shift", Qt::Key_Escape,
            Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier);
        add("F1", Qt::Key_F1, Qt::ShiftModifier);
        add("Backspace", Qt::Key_Backspace, Qt::ShiftModifier);
    }

    void otherKeysOpenNothing()
    {
        QFETCH(Qt::Key, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        openSampleDatabase();
        for (QWidget* control : {static_cast<QWidget*>(tree), static_cast<QWidget*>(list)}) {
            control->setFocus();
            QTest::keyClick(window->windowHandle(), key, modifiers);
        }
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
    }

    void chordHeldDownOpensTheConsoleOnce()
    {
        world->dialogs.expect(Console, u"LIST"_s);
        for (int time = 0; time < 4; ++time) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::ShiftModifier, u"\x1b"_s, time > 0);
            QCoreApplication::sendEvent(tree, &press);
        }
        QTest::keyRelease(tree, Qt::Key_Escape, Qt::ShiftModifier);
    }

    void unknownCommandsAreRefused_data()
    {
        QTest::addColumn<QString>("typed");
        for (const QString& typed :
             {u" MODE"_s, u"MODE "_s, u"　MODE"_s, u"ENTRY/F"_s, u"entry/f"_s, u"MODES"_s, u"MOD"_s,
              u"LIST/X"_s, u"LIST /M"_s, u"CID/"_s, u"ＭＯＤＥ"_s, u"VER CMDLIST"_s, u"?"_s, u"ヘルプ"_s})
            QTest::newRow(qPrintable(u'<' + typed + u'>')) << typed;
    }

    void unknownCommandsAreRefused()
    {
        QFETCH(QString, typed);
        openSampleDatabase();
        commandShows(typed, Refusal.text, Refusal.title);
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
        QVERIFY(world->eventLog.lines.isEmpty());
    }

    void nothingAndCancelAreRefused()
    {
        for (const std::optional<QString>& typed : {std::optional(QString()), std::optional<QString>()}) {
            world->dialogs.expect(Console, typed);
            world->dialogs.expect(Refusal);
            pressChord();
        }
    }

    void listsAreSilent_data()
    {
        QTest::addColumn<QString>("typed");
        for (const QString& typed : {u"LIST"_s, u"LIST/M"_s, u"LIST/R"_s, u"LIST/F"_s, u"list"_s, u"list/m"_s,
                                     u"List/r"_s, u"list/F"_s})
            QTest::newRow(qPrintable(typed)) << typed;
    }

    void listsAreSilent()
    {
        QFETCH(QString, typed);
        openSampleDatabase();
        chooseNode(u"B"_s);
        const QStringList before = rows();
        const QString status = WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(1);
        command(typed);
        QCOMPARE(rows(), before);
        QCOMPARE(selectedKey(), u"B"_s);
        QCOMPARE(WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(1), status);
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
    }

    void modeIsPublicAtFirstAndFollowsTheCommands()
    {
        commandShows(u"MODE"_s, PublicMode, u"Quillon"_s);
        world->dialogs.expect(Console, u"PRIVATE"_s);
        expectNotice(u"Quillonをプライベートモードへ移行します。"_s, Developer);
        world->dialogs.meanwhile([this] { QCOMPARE(session().PrivateMode, qint16(0)); });
        pressChord();
        QCOMPARE(session().PrivateMode, qint16(1));
        commandShows(u"mode"_s, PrivateMode, u"Quillon"_s);
        world->dialogs.expect(Console, u"public"_s);
        expectNotice(u"Quillonをパブリックモードへ移行します。"_s, Developer);
        world->dialogs.meanwhile([this] { QCOMPARE(session().PrivateMode, qint16(1)); });
        pressChord();
        commandShows(u"Mode"_s, PublicMode, u"Quillon"_s);
        session().PrivateMode = 2; // any other value
        commandShows(u"MODE"_s, PublicMode, u"Quillon"_s);
        commandShows(u"private"_s, u"Quillonをプライベートモードへ移行します。"_s, Developer);
        QCOMPARE(session().PrivateMode, qint16(1));
    }

    void versionAndFolderAreShown()
    {
        commandShows(u"VER"_s, u"System Ver.1.30 (Ver.2.00β)"_s, u"Quillom 情報公開部"_s);
        commandShows(u"ver"_s, u"System Ver.1.30 (Ver.2.00β)"_s, u"Quillom 情報公開部"_s);
        commandShows(u"CURDIR"_s, world->folder.path(), Intelligence);
        commandShows(u"curdir"_s, world->folder.path(), Intelligence);
    }

    void commandsAreListed()
    {
        const QStringList lines{u"<公開コマンドリスト>"_s,
                                u"NEW        新規データベース作成"_s,
                                u"OPEN       既存データベースの展開"_s,
                                u"LIST       全データの表示"_s,
                                u"LIST/M     定義データの表示"_s,
                                u"LIST/R     文献データの表示"_s,
                                u"LIST/F     ファイルデータの表示"_s,
                                u"ENTRY/M    定義データの登録"_s,
                                u"ENTRY/R    文献データの登録"_s,
                                u"ENTRY/F    ファイルデータの登録"_s,
                                u"INFO/L     リンク状況の表示"_s,
                                u"INFO/E     データ登録状況の表示"_s,
                                u"END        Quillonの終了"_s,
                                u"VER        システムバージョンの表示"_s,
                                u"CMDLIST    コマンドリストの表示"_s};
        QCOMPARE(lines.size(), 15);
        commandShows(u"CMDLIST"_s, lines.join(u"\r\n"_s), u"Quillom 情報公開部"_s);
        commandShows(u"cmdlist"_s, lines.join(u"\r\n"_s), u"Quillom 情報公開部"_s);
    }

    void noLinkAndNoCategoryIsChosenAtFirst()
    {
        commandShows(u"LINKINFO"_s, u"LINK_ID : \r\nLINK_MODE : False\r\nLINK_NAME : "_s, Intelligence);
        commandShows(u"linkinfo"_s, u"LINK_ID : \r\nLINK_MODE : False\r\nLINK_NAME : "_s, Intelligence);
        commandShows(u"CINFO"_s, u"CATEGORY_ID : \r\nCATEGORY_MODE : False\r\nCATEGORY_NAME : "_s,
                     Intelligence);
        commandShows(u"cinfo"_s, u"CATEGORY_ID : \r\nCATEGORY_MODE : False\r\nCATEGORY_NAME : "_s,
                     Intelligence);
    }

    void chosenLinkIsReadOut()
    {
        FormWindow& water = openWaterAmongManyCategories();
        ModalScript modals(session().windows);
        world->dialogs.expect(
            MessageBox{.text = u"<論文> と<水> をリンクしますか。"_s, .buttons = Buttons::OkCancel},
            Answer::Ok);
        modals.expect<frmDataSelect>(u"frmDataSelect"_s, [](frmDataSelect& form) {
            doubleClickRow(*form.findChild<ReportList*>(u"lsvData"_s), 0);
        });
        QVERIFY(WindowWorld::choose(water, u"mnuLinkRefDoc"_s));
        QCOMPARE(modals.takeComplaints(), QStringList());
        QCOMPARE(WindowWorld::rowsOf(session().RsLink), QStringList({u"R-991231-001|M-991231-001"_s}));
        commandShows(u"LINKINFO"_s, u"LINK_ID : M-991231-001\r\nLINK_MODE : True\r\nLINK_NAME : 水"_s,
                     Intelligence);

        // A search ends the pending link; whose it was stays.
        QVERIFY(WindowWorld::choose(*window, u"mnuFindName"_s));
        auto* find = world->window<frmFind>(u"frmFind"_s);
        find->findChild<QCheckBox*>(u"chkMain"_s)->setChecked(true);
        find->findChild<QLineEdit*>(u"txtFind"_s)->setText(u"炎"_s);
        find->findChild<QPushButton*>(u"cmdFind"_s)->click();
        commandShows(u"LINKINFO"_s, u"LINK_ID : M-991231-001\r\nLINK_MODE : False\r\nLINK_NAME : 水"_s,
                     Intelligence);
    }

    void chosenCategoryIsReadOut()
    {
        FormWindow& water = openWaterAmongManyCategories();
        ModalScript modals(session().windows);
        modals.expect<frmCategory>(u"frmCategory"_s, [](frmCategory& form) {
            auto* nodes = form.findChild<KeyedTree*>(u"tvwCategory"_s);
            nodes->select(nodes->nodes().position(u"A-B"_s));
            form.findChild<QPushButton*>(u"cmdOK"_s)->click();
        });
        QVERIFY(WindowWorld::choose(water, u"mnuCategoryEntry"_s));
        commandShows(u"CINFO"_s, u"CATEGORY_ID : A-B\r\nCATEGORY_MODE : True\r\nCATEGORY_NAME : 甲の二"_s,
                     Intelligence);
        modals.expect<frmCategory>(u"frmCategory"_s, [](frmCategory& form) {
            form.findChild<QPushButton*>(u"cmdCancel"_s)->click();
        });
        QVERIFY(WindowWorld::choose(water, u"mnuCategoryEntry"_s));
        QCOMPARE(modals.takeComplaints(), QStringList());
        commandShows(u"CINFO"_s, u"CATEGORY_ID : A-B\r\nCATEGORY_MODE : False\r\nCATEGORY_NAME : 甲の二"_s,
                     Intelligence);
    }

    void selectedNodeIsReadOut_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("index");
        QTest::newRow("first") << u"DIV"_s << u"1"_s;
        QTest::newRow("root of the categories") << u"CATEGORY"_s << u"9"_s;
        QTest::newRow("category") << u"A-B"_s << u"12"_s;
    }

    void selectedNodeIsReadOut()
    {
        QFETCH(QString, key);
        QFETCH(QString, index);
        openSampleDatabase();
        if (key != u"DIV"_s) // selected by opening
            chooseNode(key);
        const QString audit = u"Quillon システム監査部"_s;
        commandShows(u"CID"_s, key, audit);
        commandShows(u"cid"_s, key, audit);
        commandShows(u"CINDEX"_s, index, audit);
        commandShows(u"cindex"_s, index, audit);
        commandShows(u"CID/COUNT"_s, u"13"_s, audit);
        commandShows(u"cid/count"_s, u"13"_s, audit);
    }

    void withoutASelectedNodeTheConsoleTellsItsOwnFailure_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("withDatabase");
        QTest::newRow("key, no database") << u"CID"_s << false;
        QTest::newRow("index, no database") << u"CINDEX"_s << false;
        QTest::newRow("key") << u"CID"_s << true;
        QTest::newRow("index") << u"cindex"_s << true;
    }

    void withoutASelectedNodeTheConsoleTellsItsOwnFailure()
    {
        QFETCH(QString, typed);
        QFETCH(bool, withDatabase);
        if (withDatabase) {
            openSampleDatabase();
            tree->clearSelection();
        }
        world->dialogs.expect(Console, typed);
        expectFailureOfItsOwn(u"カテゴリツリーの項目が選択されていません。"_s);
        pressChord();
        QVERIFY(world->eventLog.lines.isEmpty()); // nothing is logged
        commandShows(u"CID/COUNT"_s, withDatabase ? u"13"_s : u"0"_s, u"Quillon システム監査部"_s);
    }
};

QTEST_MAIN(TestConsole)
#include "test_console.moc"
