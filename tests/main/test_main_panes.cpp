// The panes of the main window by keyboard.
#include "app/base/twips.h"
#include "tests/main/main_window_fixture.h"
#include "tests/support/held_key.h"

#include <QAccessible>
#include <QMessageBox>
#include <QWheelEvent>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestMainPanes : public MainWindowFixture
{
    Q_OBJECT

    void pressInWindow(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(window->windowHandle(), key, modifiers);
        WindowWorld::processEvents();
    }

    QWidget* splitter() const { return WindowWorld::control<QWidget>(*window, u"imgSplitter"_s); }
    int percentOfTree() const { return qRound(100.0 * tree->width() / window->centralWidget()->width()); }

private Q_SLOTS:
    void init()
    {
        makeWindow();
        openSampleDatabase();
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }
    void cleanup() { endWorld(); }

    void f6GoesFromPaneToPane_data()
    {
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::newRow("forwards") << Qt::KeyboardModifiers(Qt::NoModifier);
        QTest::newRow("backwards") << Qt::KeyboardModifiers(Qt::ShiftModifier);
    }

    void f6GoesFromPaneToPane()
    {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        tree->setFocus();
        pressInWindow(Qt::Key_F6, modifiers);
        QVERIFY(list->hasFocus());
        pressInWindow(Qt::Key_F6, modifiers);
        QVERIFY(tree->hasFocus());
    }

    void keyThatGoesToAndFroGoesOnceWhenItIsHeldDown_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::newRow("F6") << Qt::Key_F6 << Qt::KeyboardModifiers(Qt::NoModifier);
        QTest::newRow("Shift+F6") << Qt::Key_F6 << Qt::KeyboardModifiers(Qt::ShiftModifier);
        QTest::newRow("F8") << Qt::Key_F8 << Qt::KeyboardModifiers(Qt::NoModifier);
    }

    void keyThatGoesToAndFroGoesOnceWhenItIsHeldDown()
    {
        QFETCH(const Qt::Key, key);
        QFETCH(const Qt::KeyboardModifiers, modifiers);
        tree->setFocus();
        pressInWindow(key, modifiers);
        const QWidget* const there = window->focusWidget();
        QVERIFY(there != tree);
        for (int time = 0; time < 3; ++time) {
            repeatKeyInWindow(*window, key, modifiers);
            QCOMPARE(window->focusWidget(), there);
        }
    }

    void controlWithAnArrowMovesOnWhileItIsHeldDown()
    {
        tree->setFocus();
        pressInWindow(Qt::Key_Right, Qt::ControlModifier);
        const int width = tree->width();
        repeatKeyInWindow(*window, Qt::Key_Right, Qt::ControlModifier);
        QVERIFY(tree->width() > width);
    }

    void controlWithAnArrowMovesTheSplitterFromEitherPane()
    {
        for (QWidget* pane : {static_cast<QWidget*>(tree), static_cast<QWidget*>(list)}) {
            pane->setFocus();
            const int width = tree->width();
            const int step = pixelsFromTwips(300);
            pressInWindow(Qt::Key_Right, Qt::ControlModifier);
            QVERIFY(qAbs(tree->width() - width - step) < step / 2);
            QVERIFY(list->x() > tree->geometry().right());
            const int wider = tree->width();
            pressInWindow(Qt::Key_Right, Qt::ControlModifier);
            QVERIFY(qAbs(tree->width() - wider - step) <= 1);
            pressInWindow(Qt::Key_Left, Qt::ControlModifier);
            QVERIFY(qAbs(tree->width() - wider) <= 1);
        }
    }

    void splitterKeysStopAtTheLimitsOfThePanes()
    {
        tree->setFocus();
        for (int i = 0; i < 100; ++i)
            pressInWindow(Qt::Key_Left, Qt::ControlModifier);
        QCOMPARE(tree->width(), pixelsFromTwips(1500));
        for (int i = 0; i < 100; ++i)
            pressInWindow(Qt::Key_Right, Qt::ControlModifier);
        QVERIFY(list->width() > 0);
        QVERIFY(tree->width() < window->width());
    }

    void splitterTellsWhereItStands()
    {
        QAccessibleInterface* const handle = QAccessible::queryAccessibleInterface(splitter());
        if (handle == nullptr || handle->valueInterface() == nullptr)
            QFAIL("the splitter cannot be asked");
        QVERIFY(compareText(handle->text(QAccessible::Name), u"カテゴリツリーとデータ一覧の境界"));
        QVERIFY(compareText(handle->text(QAccessible::Description),
                            u"ドラッグ、または Ctrl + ←、→ で境界を移動します。"));
        QCOMPARE(handle->valueInterface()->currentValue().toInt(), percentOfTree());
        tree->setFocus();
        pressInWindow(Qt::Key_Right, Qt::ControlModifier);
        QCOMPARE(handle->valueInterface()->currentValue().toInt(), percentOfTree());
        handle->valueInterface()->setCurrentValue(50);
        QCOMPARE(percentOfTree(), 50);
        handle->valueInterface()->setCurrentValue(0);
        QCOMPARE(tree->width(), pixelsFromTwips(1500));
        QCOMPARE(handle->valueInterface()->currentValue().toInt(), percentOfTree());
    }

    void splitterBehindABoxStaysWhereItIs()
    {
        QAccessibleInterface* const handle = QAccessible::queryAccessibleInterface(splitter());
        if (handle == nullptr || handle->valueInterface() == nullptr)
            QFAIL("the splitter cannot be asked");
        const int width = tree->width();
        QMessageBox box(window);
        box.setWindowModality(Qt::ApplicationModal);
        box.show();
        handle->valueInterface()->setCurrentValue(percentOfTree() + 20);
        QCOMPARE(tree->width(), width);
        QCOMPARE(handle->valueInterface()->currentValue().toInt(), percentOfTree());
        box.hide();
        handle->valueInterface()->setCurrentValue(percentOfTree() + 20);
        QVERIFY(tree->width() > width);
    }

    void theStatusBarKeepsItsTextsWhenTheSplitterMoves()
    {
        const auto* status = WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s);
        const QString told = status->text(1);
        tree->setFocus();
        pressInWindow(Qt::Key_Right, Qt::ControlModifier);
        QVERIFY(compareText(status->text(1), told));
    }

    void f8GoesToTheSplitterAndBack_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("F8") << Qt::Key_F8;
        QTest::newRow("Enter") << Qt::Key_Return;
        QTest::newRow("Esc") << Qt::Key_Escape;
    }

    void f8GoesToTheSplitterAndBack()
    {
        QFETCH(const Qt::Key, key);
        for (QWidget* pane : {static_cast<QWidget*>(tree), static_cast<QWidget*>(list)}) {
            pane->setFocus();
            pressInWindow(Qt::Key_F8);
            QVERIFY(splitter()->hasFocus());
            pressInWindow(key);
            QVERIFY(pane->hasFocus());
        }
    }

    void arrowsMoveTheSplitterThatHasTheKeyboard()
    {
        tree->setFocus();
        pressInWindow(Qt::Key_F8);
        const int before = percentOfTree();
        pressInWindow(Qt::Key_Right);
        QCOMPARE(percentOfTree(), before + 2);
        pressInWindow(Qt::Key_Left);
        QCOMPARE(percentOfTree(), before);
        pressInWindow(Qt::Key_Home);
        QCOMPARE(tree->width(), pixelsFromTwips(1500));
        pressInWindow(Qt::Key_Right, Qt::ControlModifier);
        QVERIFY(tree->width() > pixelsFromTwips(1500));
        QVERIFY(splitter()->hasFocus());
    }

    void tabPassesTheSplitterBy()
    {
        tree->setFocus();
        pressInWindow(Qt::Key_Tab);
        QVERIFY(list->hasFocus());
        pressInWindow(Qt::Key_Tab);
        QVERIFY(tree->hasFocus());
    }

    void theWheelLeavesTheSplitterAlone()
    {
        const int before = tree->width();
        QWheelEvent turn(QPointF(1, 1), splitter()->mapToGlobal(QPointF(1, 1)), {}, {0, 120}, Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(splitter(), &turn);
        QCOMPARE(tree->width(), before);
    }

    void splitterKeysLeaveTheTreeAndItsListAlone()
    {
        chooseNode(u"M_DIV"_s);
        tree->setFocus();
        pressInWindow(Qt::Key_Left, Qt::ControlModifier);
        pressInWindow(Qt::Key_Right, Qt::ControlModifier);
        QCOMPARE(selectedKey(), u"M_DIV"_s);
    }
};

QTEST_MAIN(TestMainPanes)
#include "test_main_panes.moc"
