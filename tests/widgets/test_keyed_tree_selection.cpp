// Which node of a tree is selected, and when that is a node click.
#include "tests/support/held_key.h"
#include "ui/widgets/keyed_tree.h"

#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using quillon::KeyedTree;
using quillon::KeyedTreeModel;
using quillon::testing::holdKey;

class TestKeyedTreeSelection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_tree.reset(); }

    void aClickOnANodeIsTold();
    void aClickOnTheArrowOnlyOpens();
    void aDoubleClickOpensAndIsOneClick();
    void aClickBesideTheNodesKeepsTheSelection_data();
    void aClickBesideTheNodesKeepsTheSelection();
    void controlDoesNotTakeTheSelectionAway();
    void controlAndSpaceKeepTheSelection();
    void controlChoosesAnotherNodeToo();
    void aPressOnTheSelectedNodeReleasedElsewhereChangesNothing();
    void aPressThatSelectsIsToldWhereverItIsReleased();
    void everyKeyThatSelectsIsToldWhenItIsReleased_data();
    void everyKeyThatSelectsIsToldWhenItIsReleased();
    void aKeyThatIsHeldIsToldOnce();
    void textOfAnInputMethodIsToldAtOnce();
    void aKeyWhoseShiftWasReleasedFirstIsUpAgain();
    void aChoiceIsToldWhenTheFocusLeaves();
    void closingABranchSelectsItInsteadOfWhatItHides_data();
    void closingABranchSelectsItInsteadOfWhatItHides();
    void closingABranchBesideTheSelectedNodeKeepsIt();
    void aPressBesideTheNodesReleasedOnOneChangesNothing();
    void aPressWhoseNodeAKeyLeavesIsNoClick();
    void aRightClickOnAnotherNodeIsToldBeforeTheMenu();
    void aRightClickOnTheSelectedNodeIsNoClick();
    void aRightClickBesideTheNodesKeepsTheSelection();
    void removingTheSelectedNodeSelectsNoOther_data();
    void removingTheSelectedNodeSelectsNoOther();
    void theKeyboardGoesOnFromTheNeighbourOfARemovedNode();
    void removingAnotherNodeKeepsTheSelection();

private:
    QPoint at(int position) const { return m_tree->visualRect(m_tree->nodes().indexOf(position)).center(); }
    QPoint arrowOf(int position) const
    {
        const QRect item = m_tree->visualRect(m_tree->nodes().indexOf(position));
        return {item.left() - m_tree->indentation() / 2, item.center().y()};
    }
    QPoint besideTheNodes() const { return {20, 280}; }
    void moveWithLeftButton(const QPoint& position)
    {
        QMouseEvent move(QEvent::MouseMove, position, m_tree->viewport()->mapToGlobal(position), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_tree->viewport(), &move);
    }
    void askForTheMenu(const QPoint& position)
    {
        QTest::mousePress(m_tree->viewport(), Qt::RightButton, {}, position);
        QContextMenuEvent event(QContextMenuEvent::Mouse, position,
                                m_tree->viewport()->mapToGlobal(position));
        QCoreApplication::sendEvent(m_tree->viewport(), &event);
        QTest::mouseRelease(m_tree->viewport(), Qt::RightButton, {}, position);
    }

    std::unique_ptr<KeyedTree> m_tree;
};

void TestKeyedTreeSelection::init()
{
    m_tree = std::make_unique<KeyedTree>();
    KeyedTreeModel& nodes = m_tree->nodes();
    nodes.add(u""_s, u"DIV"_s, u"形式別(全データ)"_s);
    nodes.add(u"DIV"_s, u"M_DIV"_s, u"定義データ"_s);
    nodes.add(u"M_DIV"_s, u"M_NO"_s, u"未分類データ"_s);
    nodes.add(u""_s, u"CATEGORY"_s, u"分類別"_s);
    nodes.add(u"CATEGORY"_s, u"A"_s, u"水"_s);
    nodes.add(u"CATEGORY"_s, u"B"_s, u"火"_s);
    nodes.add(u"CATEGORY"_s, u"C"_s, u"土"_s);
    nodes.add(u"B"_s, u"B-A"_s, u"炎"_s);
    m_tree->resize(300, 300);
    m_tree->show();
    m_tree->activateWindow();
    m_tree->setFocus();
    m_tree->expandNode(1);
}

void TestKeyedTreeSelection::aClickOnANodeIsTold()
{
    QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, at(2));
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(clicked[0][0].toInt(), 2);
    QCOMPARE(m_tree->selectedPosition(), 2);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, at(2));
    QCOMPARE(clicked.size(), 2);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, QPoint(20, 280));
    QCOMPARE(clicked.size(), 2);
}

void TestKeyedTreeSelection::aClickOnTheArrowOnlyOpens()
{
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    m_tree->select(1);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, arrowOf(4));
    QVERIFY(m_tree->isExpanded(m_tree->nodes().indexOf(4)));
    QCOMPARE(m_tree->selectedPosition(), 1);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTreeSelection::aKeyWhoseShiftWasReleasedFirstIsUpAgain()
{
    const QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    m_tree->select(2);
    m_tree->expandNode(2);
    m_tree->select(3);
    // The star above the 8: the same place on the keyboard, but another key by the time it comes up.
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Asterisk, Qt::ShiftModifier, 17, 0, 0, u"*"_s);
    QCoreApplication::sendEvent(m_tree.get(), &press);
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_8, Qt::NoModifier, 17, 0, 0, u"8"_s);
    QCoreApplication::sendEvent(m_tree.get(), &release);
    m_tree->collapse(m_tree->nodes().indexOf(2));
    QCOMPARE(m_tree->selectedPosition(), 2);
    QCOMPARE(chosen.size(), 1); // told at once, as no key is down
    QCOMPARE(chosen[0][0].toInt(), 2);
}

void TestKeyedTreeSelection::aDoubleClickOpensAndIsOneClick()
{
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    QTest::mouseDClick(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    QTest::mouseRelease(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    QCOMPARE(clicked.size(), 1);
    QVERIFY(m_tree->isExpanded(m_tree->nodes().indexOf(4)));
}

void TestKeyedTreeSelection::aClickBesideTheNodesKeepsTheSelection_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("plain") << Qt::KeyboardModifiers();
    QTest::newRow("Ctrl") << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("Shift") << Qt::KeyboardModifiers(Qt::ShiftModifier);
}

void TestKeyedTreeSelection::aClickBesideTheNodesKeepsTheSelection()
{
    QFETCH(Qt::KeyboardModifiers, modifiers);
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    m_tree->select(2);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, modifiers, besideTheNodes());
    QCOMPARE(m_tree->selectedPosition(), 2);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTreeSelection::controlDoesNotTakeTheSelectionAway()
{
    m_tree->select(2);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, Qt::ControlModifier, at(2));
    QCOMPARE(m_tree->selectedPosition(), 2);
}

void TestKeyedTreeSelection::controlAndSpaceKeepTheSelection()
{
    m_tree->select(2);
    QTest::keyClick(m_tree.get(), Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(m_tree->selectedPosition(), 2);
    QTest::keyClick(m_tree.get(), Qt::Key_Space);
    QCOMPARE(m_tree->selectedPosition(), 2);
}

void TestKeyedTreeSelection::controlChoosesAnotherNodeToo()
{
    m_tree->select(2);
    QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, Qt::ControlModifier, at(4));
    QCOMPARE(m_tree->selectedPosition(), 4);
    QCOMPARE(clicked.size(), 1);
    QTest::keyClick(m_tree.get(), Qt::Key_Up, Qt::ControlModifier);
    QCOMPARE(m_tree->selectedPosition(), 2);
}

void TestKeyedTreeSelection::aPressOnTheSelectedNodeReleasedElsewhereChangesNothing()
{
    m_tree->select(2);
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    for (const QPoint& elsewhere : {at(4), besideTheNodes()}) {
        QTest::mousePress(m_tree->viewport(), Qt::LeftButton, {}, at(2));
        moveWithLeftButton(elsewhere);
        QTest::mouseRelease(m_tree->viewport(), Qt::LeftButton, {}, elsewhere);
        QCOMPARE(m_tree->selectedPosition(), 2);
    }
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTreeSelection::aPressThatSelectsIsToldWhereverItIsReleased()
{
    m_tree->select(2);
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    QTest::mousePress(m_tree->viewport(), Qt::LeftButton, {}, at(1));
    moveWithLeftButton(at(4));
    QTest::mouseRelease(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    QCOMPARE(m_tree->selectedPosition(), 1);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen[0][0].toInt(), 1);
    QTest::mousePress(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    QTest::mouseRelease(m_tree->viewport(), Qt::LeftButton, {}, QPoint(-50, -50));
    QCOMPARE(m_tree->selectedPosition(), 4);
    QCOMPARE(chosen.size(), 2);
    QCOMPARE(chosen[1][0].toInt(), 4);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTreeSelection::everyKeyThatSelectsIsToldWhenItIsReleased_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("selected");
    QTest::newRow("Down") << int(Qt::Key_Down) << u"M_DIV"_s;
    QTest::newRow("Page Down") << int(Qt::Key_PageDown) << u"C"_s;
    QTest::newRow("Page Up") << int(Qt::Key_PageUp) << u"DIV"_s;
    QTest::newRow("End") << int(Qt::Key_End) << u"C"_s;
    QTest::newRow("Left") << int(Qt::Key_Left) << u"DIV"_s;
    QTest::newRow("typed text") << int(Qt::Key_B) << u"B"_s;
}

void TestKeyedTreeSelection::everyKeyThatSelectsIsToldWhenItIsReleased()
{
    QFETCH(int, key);
    QFETCH(QString, selected);
    m_tree->expandNode(4);
    KeyedTreeModel& nodes = m_tree->nodes();
    nodes.setText(nodes.position(u"B"_s), u"b"_s);
    m_tree->select(selected == u"DIV"_s ? 2 : 1);
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    QTest::keyPress(m_tree.get(), Qt::Key(key));
    QCOMPARE(nodes.key(m_tree->selectedPosition()), selected);
    QCOMPARE(chosen.size(), 0);
    QTest::keyRelease(m_tree.get(), Qt::Key(key));
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen[0][0].toInt(), nodes.position(selected));
    QTest::keyClick(m_tree.get(), Qt::Key_Shift);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTreeSelection::aKeyThatIsHeldIsToldOnce()
{
    m_tree->expandNode(4);
    m_tree->select(1);
    QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    holdKey(*m_tree, Qt::Key_Down);
    QCOMPARE(m_tree->nodes().key(m_tree->selectedPosition()), u"B"_s);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen[0][0].toInt(), m_tree->selectedPosition());
}

void TestKeyedTreeSelection::textOfAnInputMethodIsToldAtOnce()
{
    m_tree->expandNode(4);
    m_tree->select(1);
    QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    QInputMethodEvent typed;
    typed.setCommitString(u"火"_s);
    QCoreApplication::sendEvent(m_tree.get(), &typed);
    QCOMPARE(m_tree->nodes().key(m_tree->selectedPosition()), u"B"_s);
    QCOMPARE(chosen.size(), 1);
}

void TestKeyedTreeSelection::aChoiceIsToldWhenTheFocusLeaves()
{
    m_tree->select(1);
    const QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    const auto leave = [&] {
        QFocusEvent leaving(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QCoreApplication::sendEvent(m_tree.get(), &leaving);
        QCoreApplication::processEvents();
    };
    QTest::keyPress(m_tree.get(), Qt::Key_Down);
    leave();
    QCOMPARE(chosen.size(), 1);
    QTest::mousePress(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    leave();
    QCOMPARE(chosen.size(), 2);
    leave();
    QCOMPARE(chosen.size(), 2);
}

void TestKeyedTreeSelection::closingABranchSelectsItInsteadOfWhatItHides_data()
{
    QTest::addColumn<QString>("closed");
    QTest::addColumn<bool>("byDoubleClick");
    QTest::newRow("the branch itself") << u"B"_s << false;
    QTest::newRow("one above") << u"CATEGORY"_s << false;
    QTest::newRow("by a double click") << u"CATEGORY"_s << true;
}

void TestKeyedTreeSelection::closingABranchSelectsItInsteadOfWhatItHides()
{
    QFETCH(QString, closed);
    QFETCH(bool, byDoubleClick);
    KeyedTreeModel& nodes = m_tree->nodes();
    m_tree->select(nodes.position(u"B-A"_s)); // opens what is above
    QVERIFY(m_tree->isExpanded(nodes.indexOf(nodes.position(closed))));
    QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    if (byDoubleClick) {
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, at(nodes.position(closed)));
        QTest::mouseDClick(m_tree->viewport(), Qt::LeftButton, {}, at(nodes.position(closed)));
    } else {
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, arrowOf(nodes.position(closed)));
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen[0][0].toInt(), nodes.position(closed));
    }
    QVERIFY(!m_tree->isExpanded(nodes.indexOf(nodes.position(closed))));
    QCOMPARE(nodes.key(m_tree->selectedPosition()), closed);
}

void TestKeyedTreeSelection::closingABranchBesideTheSelectedNodeKeepsIt()
{
    KeyedTreeModel& nodes = m_tree->nodes();
    m_tree->select(nodes.position(u"B-A"_s));
    const QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, arrowOf(1));
    QVERIFY(!m_tree->isExpanded(nodes.indexOf(1)));
    QCOMPARE(nodes.key(m_tree->selectedPosition()), u"B-A"_s);
    QCOMPARE(chosen.size(), 0);
}

void TestKeyedTreeSelection::aPressBesideTheNodesReleasedOnOneChangesNothing()
{
    m_tree->select(2);
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QTest::mousePress(m_tree->viewport(), Qt::LeftButton, {}, besideTheNodes());
    moveWithLeftButton(at(4));
    QTest::mouseRelease(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    QCOMPARE(m_tree->selectedPosition(), 2);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTreeSelection::aPressWhoseNodeAKeyLeavesIsNoClick()
{
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QTest::mousePress(m_tree->viewport(), Qt::LeftButton, {}, at(2));
    QTest::keyClick(m_tree.get(), Qt::Key_Up);
    QTest::mouseRelease(m_tree->viewport(), Qt::LeftButton, {}, at(2));
    QCOMPARE(m_tree->selectedPosition(), 1);
    QCOMPARE(clicked.size(), 0);
}

void TestKeyedTreeSelection::aRightClickOnAnotherNodeIsToldBeforeTheMenu()
{
    QStringList order;
    connect(m_tree.get(), &KeyedTree::nodeChosen, this,
            [&](int position) { order << u"node %1"_s.arg(position); });
    connect(m_tree.get(), &KeyedTree::menuRequested, this, [&](const QPoint& position) {
        order << u"menu"_s;
        QCOMPARE(position, m_tree->viewport()->mapToGlobal(at(4)));
        QCOMPARE(m_tree->selectedPosition(), 4);
    });
    m_tree->select(1);
    askForTheMenu(at(4));
    QCOMPARE(order, QStringList({u"node 4"_s, u"menu"_s}));
    QCOMPARE(m_tree->selectedPosition(), 4);
}

void TestKeyedTreeSelection::aRightClickOnTheSelectedNodeIsNoClick()
{
    m_tree->select(4);
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    const QSignalSpy menu(m_tree.get(), &KeyedTree::menuRequested);
    askForTheMenu(at(4));
    QCOMPARE(clicked.size(), 0);
    QCOMPARE(menu.size(), 1);
}

void TestKeyedTreeSelection::aRightClickBesideTheNodesKeepsTheSelection()
{
    m_tree->select(4);
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    const QSignalSpy menu(m_tree.get(), &KeyedTree::menuRequested);
    askForTheMenu(besideTheNodes());
    QCOMPARE(m_tree->selectedPosition(), 4);
    QCOMPARE(clicked.size(), 0);
    QCOMPARE(menu.size(), 1);
}

void TestKeyedTreeSelection::removingTheSelectedNodeSelectsNoOther_data()
{
    QTest::addColumn<QString>("removed");
    QTest::addColumn<QString>("selected");
    QTest::newRow("a first one") << u"A"_s << u"A"_s;
    QTest::newRow("a last one") << u"C"_s << u"C"_s;
    QTest::newRow("an only one") << u"B-A"_s << u"B-A"_s;
    QTest::newRow("what is above the selected one") << u"B"_s << u"B-A"_s;
}

void TestKeyedTreeSelection::removingTheSelectedNodeSelectsNoOther()
{
    QFETCH(QString, removed);
    QFETCH(QString, selected);
    KeyedTreeModel& nodes = m_tree->nodes();
    m_tree->select(nodes.position(selected));
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    const QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    nodes.remove(nodes.position(removed));
    QCOMPARE(m_tree->selectedPosition(), 0);
    QCOMPARE(clicked.size(), 0);
    QCOMPARE(chosen.size(), 0);
}

void TestKeyedTreeSelection::theKeyboardGoesOnFromTheNeighbourOfARemovedNode()
{
    KeyedTreeModel& nodes = m_tree->nodes();
    m_tree->select(nodes.position(u"A"_s));
    nodes.remove(nodes.position(u"A"_s));
    QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    QTest::keyClick(m_tree.get(), Qt::Key_Down);
    QCOMPARE(nodes.key(m_tree->selectedPosition()), u"B"_s);
    QCOMPARE(chosen.size(), 1);
    QTest::keyClick(m_tree.get(), Qt::Key_Home);
    QCOMPARE(m_tree->selectedPosition(), 1);
    m_tree->clearSelection();
    QTest::keyClick(m_tree.get(), Qt::Key_Home);
    QCOMPARE(m_tree->selectedPosition(), 1);
}

void TestKeyedTreeSelection::removingAnotherNodeKeepsTheSelection()
{
    KeyedTreeModel& nodes = m_tree->nodes();
    m_tree->select(nodes.position(u"B-A"_s));
    nodes.remove(nodes.position(u"A"_s));
    QCOMPARE(nodes.key(m_tree->selectedPosition()), u"B-A"_s);
}

QTEST_MAIN(TestKeyedTreeSelection)
#include "test_keyed_tree_selection.moc"
