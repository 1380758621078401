// Which node of a tree is selected, and when that is a node click.
#include "ui/widgets/keyed_tree.h"

#include <QContextMenuEvent>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using quillon::KeyedTree;
using quillon::KeyedTreeModel;

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
    void aPressBesideTheNodesReleasedOnOneChangesNothing();
    void aPressWhoseNodeAKeyLeavesIsNoClick();
    void aRightClickOnAnotherNodeIsToldBeforeTheMenu();
    void aRightClickOnTheSelectedNodeIsNoClick();
    void aRightClickBesideTheNodesKeepsTheSelection();
    void removingTheSelectedNodeSelectsItsNeighbour_data();
    void removingTheSelectedNodeSelectsItsNeighbour();

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
    QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    QTest::mousePress(m_tree->viewport(), Qt::LeftButton, {}, at(1));
    moveWithLeftButton(at(4));
    QTest::mouseRelease(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    QCOMPARE(m_tree->selectedPosition(), 1);
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(clicked[0][0].toInt(), 1);
    QTest::mousePress(m_tree->viewport(), Qt::LeftButton, {}, at(4));
    QTest::mouseRelease(m_tree->viewport(), Qt::LeftButton, {}, QPoint(-50, -50));
    QCOMPARE(m_tree->selectedPosition(), 4);
    QCOMPARE(clicked.size(), 2);
    QCOMPARE(clicked[1][0].toInt(), 4);
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
    connect(m_tree.get(), &KeyedTree::nodeClicked, this,
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

void TestKeyedTreeSelection::removingTheSelectedNodeSelectsItsNeighbour_data()
{
    QTest::addColumn<QString>("removed");
    QTest::addColumn<QString>("selected");
    QTest::newRow("the next one") << u"A"_s << u"B"_s;
    QTest::newRow("the one before the last") << u"C"_s << u"B"_s;
    QTest::newRow("above an only one") << u"B-A"_s << u"B"_s;
}

void TestKeyedTreeSelection::removingTheSelectedNodeSelectsItsNeighbour()
{
    QFETCH(QString, removed);
    QFETCH(QString, selected);
    KeyedTreeModel& nodes = m_tree->nodes();
    m_tree->select(nodes.position(removed));
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    nodes.remove(nodes.position(removed));
    QCOMPARE(nodes.key(m_tree->selectedPosition()), selected);
    QCOMPARE(clicked.size(), 0);
}

QTEST_MAIN(TestKeyedTreeSelection)
#include "test_keyed_tree_selection.moc"
