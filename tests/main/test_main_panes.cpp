// The panes of the main window by keyboard.
#include "app/base/twips.h"
#include "tests/main/main_window_fixture.h"

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
        tree->setFocus();
        pressInWindow(Qt::Key_Right, Qt::ControlModifier);
        const QString told = WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(1);
        const int percent = qRound(100.0 * tree->width() / window->centralWidget()->width());
        QCOMPARE(told, u"カテゴリツリーの幅：画面の %1 ％"_s.arg(percent));
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
