#include "tests/support/drag.h"
#include "ui/widgets/keyed_tree.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using quillon::KeyedTree;
using quillon::KeyedTreeModel;
using quillon::testing::Drag;

class TestKeyedTree : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_tree.reset(); }

    void selectingByProgramIsNoClick();
    void theMenuKeyAsksForTheMenuAtTheNode();
    void movingByKeyboardIsNoClick();
    void keysAreToldWithTheirModifiers();
    void aReleaseWithoutAPressIsNotTold();
    void aHeldKeyIsToldOnce();
    void aKeyHeldSinceBeforeIsNotTold();
    void anInputMethodCanTypeAfterTheFocusReturns();
    void rebuildingIsNoClick();
    void theSelectedNodeIsShown();
    void draggedTextHighlightsTheNodeUnderIt();
    void leavingEndsTheHighlight();
    void aDropTellsTheTextWithTheHighlightStanding();
    void theHighlightStaysWithItsNode();
    void aDropBesideTheNodesHasNoHighlight();
    void whatIsNoTextIsRefused();
    void theHighlightIsVisible();
    void hoveringOverAClosedNodeOpensIt();
    void mouseMovesAreTold();
    void namesAreShownAsTheyStand();
    void assistiveTechnologyReadsTheNodes();

private:
    QPoint at(int position) const { return m_tree->visualRect(m_tree->nodes().indexOf(position)).center(); }
    void sendRepetition(QEvent::Type type, int key)
    {
        QKeyEvent event(type, key, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(m_tree.get(), &event);
    }

    std::unique_ptr<KeyedTree> m_tree;
};

void TestKeyedTree::init()
{
    m_tree = std::make_unique<KeyedTree>();
    KeyedTreeModel& nodes = m_tree->nodes();
    nodes.add(u""_s, u"DIV"_s, u"形式別(全データ)"_s);
    nodes.add(u"DIV"_s, u"M_DIV"_s, u"定義データ"_s);
    nodes.add(u"M_DIV"_s, u"M_NO"_s, u"未分類データ"_s);
    nodes.add(u""_s, u"CATEGORY"_s, u"分類別"_s);
    nodes.add(u"CATEGORY"_s, u"A"_s, u"水"_s);
    m_tree->resize(300, 300);
    m_tree->show();
    m_tree->activateWindow();
    m_tree->setFocus();
    m_tree->expandNode(1);
}

void TestKeyedTree::selectingByProgramIsNoClick()
{
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QCOMPARE(m_tree->selectedPosition(), 0);
    m_tree->select(2);
    QCOMPARE(m_tree->selectedPosition(), 2);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTree::theMenuKeyAsksForTheMenuAtTheNode()
{
    QSignalSpy menu(m_tree.get(), &KeyedTree::menuRequested);
    m_tree->select(2);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QCoreApplication::sendEvent(m_tree->viewport(), &event);
    QCOMPARE(menu.size(), 1);
    const QPoint inside = m_tree->viewport()->mapFromGlobal(menu[0][0].toPoint());
    QCOMPARE(m_tree->nodes().position(m_tree->indexAt(inside)), 2);
}

void TestKeyedTree::movingByKeyboardIsNoClick()
{
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    m_tree->select(1);
    QTest::keyClick(m_tree.get(), Qt::Key_Down);
    QCOMPARE(m_tree->selectedPosition(), 2);
    QTest::keyClick(m_tree.get(), Qt::Key_Right);
    QVERIFY(m_tree->isExpanded(m_tree->nodes().indexOf(2)));
    QTest::keyClick(m_tree.get(), Qt::Key_End);
    QCOMPARE(m_tree->selectedPosition(), 4);
    QTest::keyClick(m_tree.get(), Qt::Key_Home);
    QCOMPARE(m_tree->selectedPosition(), 1);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTree::keysAreToldWithTheirModifiers()
{
    m_tree->select(1);
    int whenPressed = 0;
    int whenReleased = 0;
    connect(m_tree.get(), &KeyedTree::keyPressed, this, [&] { whenPressed = m_tree->selectedPosition(); });
    connect(m_tree.get(), &KeyedTree::keyReleased, this, [&] { whenReleased = m_tree->selectedPosition(); });
    QSignalSpy pressed(m_tree.get(), &KeyedTree::keyPressed);
    QSignalSpy released(m_tree.get(), &KeyedTree::keyReleased);
    QTest::keyClick(m_tree.get(), Qt::Key_Down);
    QCOMPARE(whenPressed, 1);
    QCOMPARE(whenReleased, 2);
    QKeyEvent chord(QEvent::KeyPress, Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier);
    QCoreApplication::sendEvent(m_tree.get(), &chord);
    QCOMPARE(pressed.size(), 2);
    QCOMPARE(pressed[1][0].toInt(), static_cast<int>(Qt::Key_Q));
    QCOMPARE(pressed[1][1].value<Qt::KeyboardModifiers>(), Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(released.size(), 1);
    QCOMPARE(released[0][0].toInt(), static_cast<int>(Qt::Key_Down));
}

void TestKeyedTree::aReleaseWithoutAPressIsNotTold()
{
    const QSignalSpy released(m_tree.get(), &KeyedTree::keyReleased);
    QTest::keyRelease(m_tree.get(), Qt::Key_Delete);
    QCOMPARE(released.size(), 0);
    QTest::keyClick(m_tree.get(), Qt::Key_Delete);
    QCOMPARE(released.size(), 1);
}

void TestKeyedTree::aHeldKeyIsToldOnce()
{
    const QSignalSpy pressed(m_tree.get(), &KeyedTree::keyPressed);
    const QSignalSpy released(m_tree.get(), &KeyedTree::keyReleased);
    QTest::keyPress(m_tree.get(), Qt::Key_Delete);
    for (int time = 0; time < 3; ++time) {
        sendRepetition(QEvent::KeyRelease, Qt::Key_Delete);
        sendRepetition(QEvent::KeyPress, Qt::Key_Delete);
    }
    QCOMPARE(pressed.size(), 1);
    QCOMPARE(released.size(), 0);
    QTest::keyRelease(m_tree.get(), Qt::Key_Delete);
    QCOMPARE(released.size(), 1);
}

void TestKeyedTree::aKeyHeldSinceBeforeIsNotTold()
{
    const QSignalSpy pressed(m_tree.get(), &KeyedTree::keyPressed);
    const QSignalSpy released(m_tree.get(), &KeyedTree::keyReleased);
    sendRepetition(QEvent::KeyPress, Qt::Key_Delete);
    QTest::keyRelease(m_tree.get(), Qt::Key_Delete);
    QCOMPARE(pressed.size(), 0);
    QCOMPARE(released.size(), 0);
}

void TestKeyedTree::anInputMethodCanTypeAfterTheFocusReturns()
{
    m_tree->select(1);
    QCoreApplication::processEvents(); // the window becomes the active one
    m_tree->clearFocus();
    m_tree->setFocus();
    QVERIFY(m_tree->hasFocus());
    QVERIFY(m_tree->testAttribute(Qt::WA_InputMethodEnabled));
    QInputMethodEvent committed;
    committed.setCommitString(u"分類"_s);
    QCoreApplication::sendEvent(m_tree.get(), &committed);
    QCOMPARE(m_tree->selectedPosition(), 4);
    QVERIFY(m_tree->testAttribute(Qt::WA_InputMethodEnabled));
}

void TestKeyedTree::rebuildingIsNoClick()
{
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    m_tree->select(5);
    m_tree->setDropHighlight(5);
    {
        const KeyedTreeModel::Rebuild rebuild(m_tree->nodes());
        m_tree->nodes().clear();
        m_tree->nodes().add(u""_s, u"X"_s, u"新"_s);
        QVERIFY(!m_tree->grab().isNull()); // what was shown may still be painted
    }
    QCOMPARE(m_tree->selectedPosition(), 0);
    QCOMPARE(m_tree->dropHighlight(), 0);
    m_tree->select(1);
    m_tree->nodes().remove(1);
    QCOMPARE(m_tree->selectedPosition(), 0);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTree::theSelectedNodeIsShown()
{
    for (int node = 0; node < 200; ++node)
        m_tree->nodes().add(u"CATEGORY"_s, u"N%1"_s.arg(node), u"名"_s);
    m_tree->select(m_tree->nodes().nodeCount());
    QVERIFY(m_tree->isExpanded(m_tree->nodes().indexOf(4)));
    QVERIFY(m_tree->viewport()->rect().contains(at(m_tree->nodes().nodeCount())));
}

void TestKeyedTree::draggedTextHighlightsTheNodeUnderIt()
{
    Drag drag(*m_tree->viewport(), u"M-991231-001"_s);
    QVERIFY(drag.moveTo(at(2)));
    QCOMPARE(m_tree->dropHighlight(), 2);
    QVERIFY(drag.moveTo(at(4)));
    QCOMPARE(m_tree->dropHighlight(), 4);
    QVERIFY(drag.moveTo(QPoint(20, 250)));
    QCOMPARE(m_tree->dropHighlight(), 0);
    QCOMPARE(m_tree->selectedPosition(), 0);
}

void TestKeyedTree::leavingEndsTheHighlight()
{
    Drag drag(*m_tree->viewport(), u"M-991231-001"_s);
    QVERIFY(drag.moveTo(at(2)));
    drag.leave();
    QCOMPARE(m_tree->dropHighlight(), 0);
}

void TestKeyedTree::aDropTellsTheTextWithTheHighlightStanding()
{
    Drag drag(*m_tree->viewport(), u"M-991231-001"_s);
    QSignalSpy dropped(m_tree.get(), &KeyedTree::textDropped);
    int highlighted = 0;
    connect(m_tree.get(), &KeyedTree::textDropped, this, [&] { highlighted = m_tree->dropHighlight(); });
    QVERIFY(drag.moveTo(at(2)));
    QVERIFY(drag.dropAt(at(2)));
    QCOMPARE(dropped.size(), 0); // the drag is still going on
    QCoreApplication::processEvents();
    QCOMPARE(dropped.size(), 1);
    QCOMPARE(dropped[0][0].toString(), u"M-991231-001"_s);
    QCOMPARE(highlighted, 2);
    QCOMPARE(m_tree->dropHighlight(), 2);
    m_tree->setDropHighlight(0);
    QCOMPARE(m_tree->dropHighlight(), 0);
}

void TestKeyedTree::theHighlightStaysWithItsNode()
{
    m_tree->setDropHighlight(5);
    m_tree->nodes().remove(3);
    QCOMPARE(m_tree->dropHighlight(), 4);
    m_tree->nodes().remove(4);
    QCOMPARE(m_tree->dropHighlight(), 0);
}

void TestKeyedTree::aDropBesideTheNodesHasNoHighlight()
{
    Drag drag(*m_tree->viewport(), u"M-991231-001"_s);
    const QSignalSpy dropped(m_tree.get(), &KeyedTree::textDropped);
    QVERIFY(drag.moveTo(QPoint(20, 250)));
    QVERIFY(drag.dropAt(QPoint(20, 250)));
    QCoreApplication::processEvents();
    QCOMPARE(dropped.size(), 1);
    QCOMPARE(m_tree->dropHighlight(), 0);
}

void TestKeyedTree::whatIsNoTextIsRefused()
{
    Drag drag(*m_tree->viewport());
    drag.data().setData(u"application/octet-stream"_s, "x");
    const QSignalSpy dropped(m_tree.get(), &KeyedTree::textDropped);
    QVERIFY(!drag.moveTo(at(2)));
    QVERIFY(!drag.dropAt(at(2)));
    QCoreApplication::processEvents();
    QCOMPARE(m_tree->dropHighlight(), 0);
    QCOMPARE(dropped.size(), 0);
}

void TestKeyedTree::theHighlightIsVisible()
{
    const QImage before = m_tree->viewport()->grab().toImage();
    m_tree->setDropHighlight(2);
    const QImage marked = m_tree->viewport()->grab().toImage();
    QVERIFY(before != marked);
    m_tree->setDropHighlight(0);
    QCOMPARE(m_tree->viewport()->grab().toImage(), before);
}

void TestKeyedTree::hoveringOverAClosedNodeOpensIt()
{
    Drag drag(*m_tree->viewport(), u"M-991231-001"_s);
    QVERIFY(!m_tree->isExpanded(m_tree->nodes().indexOf(4)));
    QVERIFY(drag.moveTo(at(4)));
    QTRY_VERIFY(m_tree->isExpanded(m_tree->nodes().indexOf(4)));
}

void TestKeyedTree::mouseMovesAreTold()
{
    const QSignalSpy moved(m_tree.get(), &KeyedTree::mouseMoved);
    QMouseEvent move(QEvent::MouseMove, at(2), m_tree->viewport()->mapToGlobal(at(2)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_tree->viewport(), &move);
    QCOMPARE(moved.size(), 1);
    QVERIFY(m_tree->viewport()->hasMouseTracking());
}

void TestKeyedTree::namesAreShownAsTheyStand()
{
    m_tree->nodes().setText(5, u"<b>水</b>\n&火"_s);
    QCOMPARE(m_tree->nodes().indexOf(5).data().toString(), u"<b>水</b>\n&火"_s);
    m_tree->expandNode(4);
    QCOMPARE(m_tree->visualRect(m_tree->nodes().indexOf(5)).height(),
             m_tree->visualRect(m_tree->nodes().indexOf(1)).height());
}

void TestKeyedTree::assistiveTechnologyReadsTheNodes()
{
    m_tree->setAccessibleName(u"カテゴリツリー"_s);
    QAccessibleInterface* view = QAccessible::queryAccessibleInterface(m_tree.get());
    QVERIFY(view != nullptr);
    QCOMPARE(view->text(QAccessible::Name), u"カテゴリツリー"_s);
    QAccessibleTableInterface* table = view->tableInterface();
    QVERIFY(table != nullptr);
    QCOMPARE(table->rowCount(), 3);
    QCOMPARE(table->cellAt(1, 0)->text(QAccessible::Name), u"定義データ"_s);
    QVERIFY(table->cellAt(1, 0)->state().expandable);
}

QTEST_MAIN(TestKeyedTree)
#include "test_keyed_tree.moc"
