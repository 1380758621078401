// Keys in the category tree and the data list of the main window.
#include "app/base/ports/data_window.h"
#include "tests/main/main_window_fixture.h"
#include "tests/support/held_key.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestMainKeys : public MainWindowFixture
{
    Q_OBJECT

    const QString NewCategoryQuestion = u"新規にカテゴリを登録しますか。"_s;

private Q_SLOTS:
    void init()
    {
        makeWindow();
        openSampleDatabase();
    }
    void cleanup() { endWorld(); }

    void insertOpensOneRegistration_data()
    {
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<QString>("opened");
        const auto add = [](const char* name, Qt::KeyboardModifiers modifiers, const QString& opened) {
            QTest::newRow(name) << modifiers << opened;
        };
        add("alone", Qt::NoModifier, u"frmMainData"_s);
        add("Shift", Qt::ShiftModifier, u"frmRefDoc"_s);
        add("Ctrl", Qt::ControlModifier, u"frmMainData"_s);
        add("Ctrl and Shift", Qt::ControlModifier | Qt::ShiftModifier, u"frmMainData"_s);
        add("Alt and Shift", Qt::AltModifier | Qt::ShiftModifier, u"frmMainData"_s);
        add("on the number pad", Qt::KeypadModifier, u"frmMainData"_s);
        add("Shift, on the number pad", Qt::KeypadModifier | Qt::ShiftModifier, u"frmRefDoc"_s);
        add("Shift and the system's key", Qt::MetaModifier | Qt::ShiftModifier, u"frmRefDoc"_s);
        add("Shift in another key group", Qt::GroupSwitchModifier | Qt::ShiftModifier, u"frmRefDoc"_s);
    }

    void insertOpensOneRegistration()
    {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(QString, opened);
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
        pressKey(list, Qt::Key_Insert, modifiers);
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, opened}));
        auto* registration = world->window<FormWindow>(opened);
        QVERIFY(registration != nullptr);
        QVERIFY(compareText(modeOf(opened), u"登録モード"));
        QVERIFY(registration->isVisible());
    }

    void insertHeldDownRegistersOnce()
    {
        chooseNode(u"A"_s);
        holdKey(*list, Qt::Key_Insert);
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, u"frmMainData"_s}));
        // Each further time would file the new datum once more.
        QCOMPARE(world->window<DataWindow>(u"frmMainData"_s)->categoryRows().size(), std::size_t(1));
    }

    void deleteAsksOnceHoweverLongItIsHeld()
    {
        selectRows({0});
        expectQuestion(u"<水> を削除しますか。"_s, Answer::Cancel);
        holdKey(*list, Qt::Key_Delete);
        expectQuestion(u"<水> を削除しますか。"_s, Answer::Ok);
        pressKey(list, Qt::Key_Delete, Qt::KeypadModifier);
        QCOMPARE(names().size(), 6);
    }

    void enterOpensTheSelectedRow_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Return") << Qt::Key_Return;
        QTest::newRow("Enter") << Qt::Key_Enter;
    }

    void enterOpensTheSelectedRow()
    {
        QFETCH(Qt::Key, key);
        selectRows({1});
        pressKey(list, key);
        QVERIFY(compareText(world->window<FormWindow>(u"frmMainData"_s)->windowTitle(), u"定義画面 - 火"));
    }

    void firstRowIsOpenedByTheKeyboardAlone()
    {
        tree->setFocus();
        QTest::keyClick(window->windowHandle(), Qt::Key_Tab);
        QCOMPARE(window->focusWidget(), list);
        QTest::keyClick(window->windowHandle(), Qt::Key_Down);
        QTest::keyClick(window->windowHandle(), Qt::Key_Return);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        QVERIFY(compareText(world->window<FormWindow>(u"frmMainData"_s)->windowTitle(), u"定義画面 - 水"));
    }

    void insertInTheTreeRegistersACategory()
    {
        expectQuestion(NewCategoryQuestion, Answer::Ok);
        world->dialogs.expect(InputBox{.prompt = u"カテゴリ名を入力してください。"_s}, u"丙"_s);
        pressKey(tree, Qt::Key_Insert);
        QCOMPARE(categories().last(), u"C|丙"_s);
        expectQuestion(NewCategoryQuestion, Answer::Cancel);
        pressKey(tree, Qt::Key_Insert, Qt::KeypadModifier | Qt::ShiftModifier);
        QCOMPARE(categories().size(), 5);
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
    }

    void deleteInTheTreeDeletesTheCategory()
    {
        expectNotice(u"カテゴリが選択されていません。"_s);
        pressKey(tree, Qt::Key_Delete);
        tree->select(tree->nodes().position(u"B"_s));
        expectQuestion(u"<乙> を削除しますか。"_s, Answer::Ok);
        pressKey(tree, Qt::Key_Delete);
        QCOMPARE(categories().size(), 3);
        QCOMPARE(window->nodeCount(), 12);
    }

    void keysHeldInTheTreeAskOnce()
    {
        expectQuestion(NewCategoryQuestion, Answer::Cancel);
        holdKey(*tree, Qt::Key_Insert);
        tree->select(tree->nodes().position(u"B"_s));
        expectQuestion(u"<乙> を削除しますか。"_s, Answer::Cancel);
        holdKey(*tree, Qt::Key_Delete);
    }

    void everyKeyThatSelectsANodeListsItsData_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::newRow("Page Down") << int(Qt::Key_PageDown) << u"A"_s << u"B"_s;
        QTest::newRow("Page Up") << int(Qt::Key_PageUp) << u"A"_s << u"DIV"_s;
        QTest::newRow("Home") << int(Qt::Key_Home) << u"A"_s << u"DIV"_s;
        QTest::newRow("End") << int(Qt::Key_End) << u"A"_s << u"B"_s;
        QTest::newRow("Down") << int(Qt::Key_Down) << u"A"_s << u"B"_s;
        QTest::newRow("Up") << int(Qt::Key_Up) << u"B"_s << u"A"_s;
        QTest::newRow("Left") << int(Qt::Key_Left) << u"A-A"_s << u"A"_s;
        QTest::newRow("Right") << int(Qt::Key_Right) << u"CATEGORY"_s << u"A"_s;
    }

    void everyKeyThatSelectsANodeListsItsData()
    {
        QFETCH(int, key);
        QFETCH(QString, from);
        QFETCH(QString, to);
        WindowWorld::addRow(session().RsCategory, {u"B"_s, u"M-991231-003"_s});
        chooseNode(to);
        const QStringList expected = rows();
        chooseNode(from);
        QVERIFY(rows() != expected);
        pressKey(tree, key);
        QCOMPARE(selectedKey(), to);
        QCOMPARE(rows(), expected);
        QVERIFY(compareText(count(), u"表示データ数 ： "_s + QString::number(expected.size())));
    }

    void typedNameListsTheNodesData()
    {
        QInputMethodEvent typed;
        typed.setCommitString(u"甲"_s);
        QCoreApplication::sendEvent(tree, &typed);
        QCOMPARE(selectedKey(), u"A"_s);
        QCOMPARE(names(), QStringList({u"水"_s, u"火"_s, u"水"_s, u"論文"_s}));
    }

    void rowsAreTakenOutOfTheCategoryThatIsListed()
    {
        // While a key is held down in the tree, the list has not followed yet.
        WindowWorld::addRow(session().RsCategory, {u"B"_s, u"M-991231-002"_s});
        chooseNode(u"A"_s);
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QCoreApplication::sendEvent(tree, &press);
        QCOMPARE(selectedKey(), u"B"_s);
        selectRows({1}); // 火
        QVERIFY(WindowWorld::choose(*window, u"mnuDataCategoryDelete"_s));
        QCOMPARE(memberships(), QStringList({u"A|M-991231-001"_s, u"A-A|M-991231-001"_s,
                                             u"A-B|R-991231-001"_s, u"B|M-991231-002"_s}));
    }

    void keyOfABoxDoesNothingInTheTree()
    {
        // The press went to a box that has closed; what is left of the key arrives here.
        repeatKey(*tree, Qt::Key_Delete);
        QTest::keyRelease(tree, Qt::Key_Delete);
        QTest::keyRelease(tree, Qt::Key_Insert);
        QCOMPARE(window->nodeCount(), 13);
    }

    void withoutASelectedNodeTheListIsEmptied()
    {
        tree->clearSelection();
        QCOMPARE(rows().size(), 7);
        window->tvwCategory_KeyUp(Qt::Key_Space);
        QCOMPARE(rows(), QStringList());
        QVERIFY(compareText(count(), u"表示データ数 ： 0"));
    }

    void treeThatWasNotFinishedCanBeUsed()
    {
        WindowWorld::addRow(session().RsCategoryID, {u"D-A"_s, u"子"_s});
        WindowWorld::addRow(session().RsCategoryID, {u"D"_s, u"親"_s});
        expectFailure(u"OpenDbFile"_s, errors::KeyNotUnique);
        world->open(database().path());
        QCOMPARE(tree->selectedPosition(), 0);
        pressKey(tree, Qt::Key_Right);
        QVERIFY(compareText(count(), u"表示データ数 ： "_s + QString::number(rows().size())));
        pressKey(tree, Qt::Key_Home);
        QCOMPARE(selectedKey(), u"DIV"_s);
        QCOMPARE(rows().size(), 7);
    }

    void withoutADatabaseKeysDoNothing()
    {
        endWorld();
        makeWindow(); // another program, in which nothing has been opened
        for (const int key : {Qt::Key_Insert, Qt::Key_Delete, Qt::Key_Return, Qt::Key_Home, Qt::Key_Space}) {
            pressKey(list, key);
            pressKey(tree, key);
        }
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
    }
};

QTEST_MAIN(TestMainKeys)
#include "test_main_keys.moc"
