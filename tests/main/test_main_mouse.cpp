// The mouse in the main window: clicks, double clicks and menus, as the window system tells them.
#include "tests/main/main_window_fixture.h"

#include <QContextMenuEvent>
#include <QMenu>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestMainMouse : public MainWindowFixture
{
    Q_OBJECT

    const MessageBox NothingSelected{.text = u"データが選択されていません。"_s,
                                     .title = u"Quillon システム運用部"_s};

    QPoint inWindow(const QAbstractScrollArea* view, const QPoint& place) const
    {
        return view->viewport()->mapTo(window, place);
    }
    void click(const QAbstractScrollArea* view, Qt::MouseButton button, const QPoint& place)
    {
        QTest::mouseClick(window->windowHandle(), button, {}, inWindow(view, place));
    }
    void doubleClick(const QPoint& place)
    {
        QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {}, inWindow(list, place));
    }
    QMenu* menu(const QString& name) const { return WindowWorld::control<QMenu>(*window, name); }
    /// Asks for a view's menu with the menu key.
    static void pressMenuKey(QAbstractScrollArea* view)
    {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, view->viewport()->rect().center(),
                                view->viewport()->mapToGlobal(view->viewport()->rect().center()));
        QCoreApplication::sendEvent(view->viewport(), &event);
    }
    QPoint besideTheNodes() const { return tree->viewport()->rect().bottomLeft() + QPoint(20, -5); }
    QPoint belowTheRows() const { return list->viewport()->rect().bottomLeft() + QPoint(20, -5); }

private Q_SLOTS:
    void init()
    {
        makeWindow();
        openSampleDatabase();
    }
    void cleanup() { endWorld(); }

    void clickListsTheNodesData()
    {
        click(tree, Qt::LeftButton, nodeAt(u"A"_s));
        QCOMPARE(names(), QStringList({u"水"_s, u"火"_s, u"水"_s, u"論文"_s}));
        click(tree, Qt::LeftButton, besideTheNodes());
        QCOMPARE(selectedKey(), u"A"_s);
        QCOMPARE(names().size(), 4);
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::ControlModifier,
                          inWindow(tree, nodeAt(u"A"_s)));
        QCOMPARE(selectedKey(), u"A"_s);
        QCOMPARE(names().size(), 4);
    }

    void rightClickListsTheNodesDataAndShowsTheMenu()
    {
        const QPoint place = nodeAt(u"A"_s);
        click(tree, Qt::RightButton, place);
        QVERIFY(menu(u"mnuCategory"_s)->isVisible());
        QCOMPARE(menu(u"mnuCategory"_s)->pos(), tree->viewport()->mapToGlobal(place));
        menu(u"mnuCategory"_s)->close();
        QCOMPARE(selectedKey(), u"A"_s);
        QCOMPARE(names(), QStringList({u"水"_s, u"火"_s, u"水"_s, u"論文"_s}));
        QVERIFY(compareText(count(), u"表示データ数 ： 4"));
        // What the data menu does now, it does to what is listed.
        list->selectAll();
        QVERIFY(WindowWorld::choose(*window, u"mnuDataCategoryDelete"_s));
        QCOMPARE(memberships(), QStringList());
    }

    void rightClickBesideTheNodesShowsTheMenuToo()
    {
        click(tree, Qt::RightButton, besideTheNodes());
        QVERIFY(menu(u"mnuCategory"_s)->isVisible());
        menu(u"mnuCategory"_s)->close();
        QCOMPARE(selectedKey(), u"DIV"_s);
        QCOMPARE(names().size(), 7);
    }

    void pressDraggedOffItsNodeListsTheNodeThatIsSelected()
    {
        QTest::mousePress(window->windowHandle(), Qt::LeftButton, {}, inWindow(tree, nodeAt(u"A"_s)));
        QTest::mouseMove(window->windowHandle(), inWindow(tree, nodeAt(u"B"_s)));
        QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, {}, inWindow(tree, nodeAt(u"B"_s)));
        QCOMPARE(selectedKey(), u"A"_s);
        QCOMPARE(names().size(), 4);
    }

    void branchThatIsClosedOverTheSelectedNodeIsListedInItsPlace()
    {
        chooseNode(u"A-A"_s);
        QCOMPARE(names(), QStringList(u"水"_s));
        const QRect node = tree->visualRect(tree->nodes().indexOf(tree->nodes().position(u"A"_s)));
        click(tree, Qt::LeftButton, {node.left() - tree->indentation() / 2, node.center().y()});
        QCOMPARE(selectedKey(), u"A"_s);
        QCOMPARE(names(), QStringList({u"水"_s, u"火"_s, u"水"_s, u"論文"_s}));
        QVERIFY(compareText(count(), u"表示データ数 ： 4"));
    }

    void rightClickInTheListSelectsTheRowAndShowsTheMenu()
    {
        click(list, Qt::RightButton, rowAt(2));
        QVERIFY(menu(u"mnuData"_s)->isVisible());
        menu(u"mnuData"_s)->close();
        QCOMPARE(list->selectedRows(), (std::vector<int>{2}));
        click(list, Qt::RightButton, belowTheRows());
        QVERIFY(menu(u"mnuData"_s)->isVisible());
        menu(u"mnuData"_s)->close();
    }

    void menuKeyShowsTheMenus()
    {
        pressMenuKey(tree);
        QVERIFY(menu(u"mnuCategory"_s)->isVisible());
        menu(u"mnuCategory"_s)->close();
        selectRows({1});
        pressMenuKey(list);
        QVERIFY(menu(u"mnuData"_s)->isVisible());
        menu(u"mnuData"_s)->close();
        QCOMPARE(list->selectedRows(), (std::vector<int>{1}));
    }

    void withoutADatabaseThereAreNoMenus()
    {
        endWorld();
        makeWindow(); // another program, in which nothing has been opened
        click(tree, Qt::RightButton, QPoint(20, 20));
        click(list, Qt::RightButton, QPoint(20, 20));
        pressMenuKey(tree);
        pressMenuKey(list);
        QVERIFY(!menu(u"mnuCategory"_s)->isVisible());
        QVERIFY(!menu(u"mnuData"_s)->isVisible());
    }

    void doubleClickOpensTheRow()
    {
        doubleClick(rowAt(1));
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        QVERIFY(compareText(world->window<FormWindow>(u"frmMainData"_s)->windowTitle(), u"定義画面 - 火"));
    }

    void doubleClickBesideTheRowsIsRefused()
    {
        world->dialogs.expect(NothingSelected);
        doubleClick(belowTheRows());
        chooseNode(u"CATEGORY"_s);
        world->dialogs.expect(NothingSelected);
        doubleClick(QPoint(20, 20));
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
    }

    void doubleClickIsRefusedBeforeADatabaseIsOpen()
    {
        endWorld();
        makeWindow(); // another program, in which nothing has been opened
        world->dialogs.expect(NothingSelected);
        doubleClick(QPoint(20, 20));
    }
};

QTEST_MAIN(TestMainMouse)
#include "test_main_mouse.moc"
