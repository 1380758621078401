#include "tests/widgets/report_list_fixture.h"
#include "ui/widgets/accessible_view.h"
#include "ui/widgets/keyed_tree.h"

#include <QAccessible>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QMessageBox>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// What assistive technology has been told, as "what: name".
QStringList& told()
{
    static QStringList events;
    return events;
}

void note(QAccessibleEvent& event)
{
    QAccessibleInterface* iface = event.accessibleInterface();
    const QString name = iface->text(QAccessible::Name);
    switch (event.type()) {
    case QAccessible::Focus:
        told() << u"focus: "_s + name;
        break;
    case QAccessible::SelectionAdd:
        told() << u"selected: "_s + name;
        break;
    case QAccessible::SelectionRemove:
        told() << u"not selected: "_s + name;
        break;
    case QAccessible::StateChanged:
        if (static_cast<QAccessibleStateChangeEvent&>(event).changedStates().expanded)
            told() << (iface->state().expanded ? u"open: "_s : u"closed: "_s) + name;
        break;
    default:
        break;
    }
}

/// Assistive technology that listens, as long as it lives.
class Listening
{
public:
    Listening() : m_before(AccessibleView::hear(note)) { told().clear(); }
    ~Listening() { AccessibleView::hear(m_before); }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

private:
    AccessibleView::Listener m_before;
};

void press(QAccessibleInterface* iface, const QString& action)
{
    iface->actionInterface()->doAction(action);
    QCoreApplication::processEvents();
}

} // namespace

class TestAccessibleView : public ReportListFixture
{
    Q_OBJECT

private:
    std::unique_ptr<KeyedTree> m_tree;

    QAccessibleInterface* list() { return QAccessible::queryAccessibleInterface(m_list); }
    QAccessibleTableInterface* table() { return list()->tableInterface(); }
    QAccessibleInterface* tree() { return QAccessible::queryAccessibleInterface(m_tree.get()); }
    QAccessibleInterface* cell(int row, int column = 0) { return table()->cellAt(row, column); }
    QAccessibleInterface* node(int row) { return tree()->tableInterface()->cellAt(row, 0); }
    QStringList nodes()
    {
        QStringList names;
        for (int row = 0; row < tree()->tableInterface()->rowCount(); ++row)
            names << node(row)->text(QAccessible::Name);
        return names;
    }
    static QString nameOf(QAccessibleInterface* iface) { return iface->text(QAccessible::Name); }

private Q_SLOTS:
    void init();
    void cleanup();
    void aListConsistsOfItsHeadersAndItsCells();
    void hiddenHeadersAreNotPartOfAView();
    void hiddenColumnsAreNotPartOfAList();
    void aCellIsKnownByItsPlaceAndItsPlaceByTheCell();
    void aCellThatThereIsNotIsNotValid();
    void cellsFollowTheirRowsWhenTheListIsSorted();
    void cellsOfRemovedRowsAreGone();
    void aFilledListHasOtherCells();
    void aRowIsSelectedFromOutside();
    void aRowIsTakenOutOfTheSelectionFromOutside();
    void aListOfOneSelectedRowKeepsItsRow();
    void theRowOfTheKeyboardIsToldWhereTheListHasIt();
    void manySelectedRowsAreToldAsOne();
    void pressingARowOpensIt();
    void theMenuOfARowOpens();
    void theFocusGoesToTheRow();
    void pressingAHeaderSorts();
    void nothingActsBehindABox();
    void leavesAreNeitherOpenNorClosed();
    void aTreeShowsWhatNoClosedBranchHides();
    void openingAndClosingABranchIsTold();
    void aNodeChosenFromOutsideIsToldAsChosen();
    void aNodeThatIsSelectedAlreadyIsNotChosenAgain();
    void pressingANodeIsAClick();
    void branchesAreTurnedFromOutside();
    void removedNodesAreGone();
    void allNamesOfALongListAreReadInPieces();
};

void TestAccessibleView::init()
{
    makeList();
    QCoreApplication::processEvents(); // the list gets the keyboard
    m_tree = std::make_unique<KeyedTree>();
    KeyedTreeModel& model = m_tree->nodes();
    model.add(u"", u"A", u"全部");
    model.add(u"A", u"B", u"定義");
    model.add(u"A", u"C", u"文献");
    model.add(u"C", u"D", u"古い文献");
    m_tree->resize(300, 300);
}

void TestAccessibleView::cleanup()
{
    m_tree.reset();
    takeDown();
}

void TestAccessibleView::aListConsistsOfItsHeadersAndItsCells()
{
    QCOMPARE(list()->role(), QAccessible::Table);
    QCOMPARE(list()->childCount(), 3 + 5 * 3);
    QStringList names;
    for (int child = 0; child < 9; ++child)
        names << nameOf(list()->child(child));
    QCOMPARE(names, QStringList({u"名称"_s, u"種別"_s, u"ＩＤ"_s, u"りんご"_s, u"定義"_s, u"M-1"_s,
                                 u"apple"_s, u"定義"_s, u"M-2"_s}));
    QCOMPARE(list()->child(2)->role(), QAccessible::ColumnHeader);
    QCOMPARE(list()->child(3)->role(), QAccessible::Cell);
    QVERIFY(list()->child(18) == nullptr);
    QCOMPARE(cell(1)->tableCellInterface()->columnHeaderCells(),
             QList<QAccessibleInterface*>{list()->child(0)});
    for (int child = 0; child < list()->childCount(); ++child)
        QCOMPARE(list()->indexOfChild(list()->child(child)), child);
}

void TestAccessibleView::hiddenHeadersAreNotPartOfAView()
{
    QVERIFY(cell(1)->tableCellInterface()->rowHeaderCells().isEmpty());
    QCOMPARE(table()->rowDescription(1), QString());
    m_tree->expandAll();
    QCOMPARE(tree()->childCount(), 4);
    QCOMPARE(tree()->child(0)->role(), QAccessible::TreeItem);
    QVERIFY(node(0)->tableCellInterface()->columnHeaderCells().isEmpty());
}

void TestAccessibleView::hiddenColumnsAreNotPartOfAList()
{
    m_list->setColumnHidden(1, true);
    QCOMPARE(table()->columnCount(), 2);
    QCOMPARE(list()->childCount(), 2 + 5 * 2);
    QCOMPARE(nameOf(list()->child(1)), u"ＩＤ"_s);
    QCOMPARE(table()->columnDescription(1), u"ＩＤ"_s);
    QCOMPARE(nameOf(cell(2, 1)), u"M-3"_s);
    QCOMPARE(cell(2, 1)->tableCellInterface()->columnIndex(), 1);
    QCOMPARE(list()->indexOfChild(cell(2, 1)), 2 + 5);
    QVERIFY(!cell(2, 2)->isValid());
}

void TestAccessibleView::aCellIsKnownByItsPlaceAndItsPlaceByTheCell()
{
    QAccessibleInterface* found = cell(3, 2);
    QCOMPARE(nameOf(found), u"M-4"_s);
    QCOMPARE(found->tableCellInterface()->rowIndex(), 3);
    QCOMPARE(found->tableCellInterface()->columnIndex(), 2);
    QCOMPARE(found->parent(), list());
    QCOMPARE(cell(3, 2), found);
    const QPoint middle = found->rect().center();
    QCOMPARE(list()->childAt(middle.x(), middle.y()), found);
    QAccessibleInterface* header = list()->child(1);
    QCOMPARE(list()->childAt(header->rect().center().x(), header->rect().center().y()), header);
    QVERIFY(!found->state().invisible);
}

void TestAccessibleView::aCellThatThereIsNotIsNotValid()
{
    for (const auto& [row, column] : {std::pair(5, 0), std::pair(0, 3), std::pair(-1, -1)}) {
        QAccessibleInterface* nowhere = cell(row, column);
        if (nowhere == nullptr)
            QFAIL("no interface");
        QVERIFY(!nowhere->isValid());
        QCOMPARE(nowhere->tableCellInterface()->rowIndex(), -1);
        QVERIFY(!nowhere->tableCellInterface()->isSelected());
        QCOMPARE(nameOf(nowhere), QString());
        press(nowhere, QAccessibleActionInterface::pressAction());
    }
    QVERIFY(!table()->selectRow(5));
    QVERIFY(!table()->unselectRow(-1));
}

void TestAccessibleView::cellsFollowTheirRowsWhenTheListIsSorted()
{
    QAccessibleInterface* apple = cell(1);
    QAccessibleInterface* fruit = cell(0, 2);
    m_list->rows().sortByColumn(0);
    QCOMPARE(nameOf(apple), u"apple"_s);
    QCOMPARE(apple->tableCellInterface()->rowIndex(), 0);
    QCOMPARE(cell(0), apple);
    QCOMPARE(nameOf(fruit), u"M-1"_s);
    QCOMPARE(cell(fruit->tableCellInterface()->rowIndex(), 2), fruit);
}

void TestAccessibleView::cellsOfRemovedRowsAreGone()
{
    QAccessibleInterface* last = cell(4);
    const QAccessible::Id gone = QAccessible::uniqueId(cell(1));
    m_list->rows().removeRowsAt({1});
    QVERIFY(QAccessible::accessibleInterface(gone) == nullptr);
    QCOMPARE(nameOf(last), u"水"_s);
    QCOMPARE(last->tableCellInterface()->rowIndex(), 3);
    QCOMPARE(cell(3), last);
    QCOMPARE(nameOf(cell(1)), u"Banana"_s);
}

void TestAccessibleView::aFilledListHasOtherCells()
{
    const QAccessible::Id before = QAccessible::uniqueId(cell(0));
    m_list->rows().clear();
    fill(*m_list, {u"別"_s});
    QVERIFY(QAccessible::accessibleInterface(before) == nullptr);
    QCOMPARE(nameOf(cell(0)), u"別"_s);
}

void TestAccessibleView::aRowIsSelectedFromOutside()
{
    const Listening listening;
    QVERIFY(table()->selectRow(1));
    QVERIFY(table()->selectRow(3));
    QCOMPARE(selectedNames(*m_list), QStringList({u"apple"_s, u"avocado"_s}));
    QCOMPARE(told(), QStringList({u"selected: apple"_s, u"focus: apple"_s, u"selected: avocado"_s,
                                  u"focus: avocado"_s}));
    QCOMPARE(table()->selectedRows(), QList<int>({1, 3}));
    QCOMPARE(table()->selectedRowCount(), 2);
    QCOMPARE(table()->selectedCellCount(), 6);
    QCOMPARE(table()->selectedCells().size(), 6);
    QVERIFY(table()->isRowSelected(3));
    QVERIFY(cell(3, 1)->state().selected);
    QVERIFY(!cell(2)->state().selected);
}

void TestAccessibleView::aRowIsTakenOutOfTheSelectionFromOutside()
{
    table()->selectRow(1);
    table()->selectRow(2);
    const Listening listening;
    press(cell(1), QAccessibleActionInterface::toggleAction());
    QCOMPARE(selectedNames(*m_list), QStringList(u"Banana"_s));
    QCOMPARE(told(), QStringList(u"not selected: apple"_s));
    press(cell(1), QAccessibleActionInterface::toggleAction());
    QCOMPARE(selectedNames(*m_list), QStringList({u"apple"_s, u"Banana"_s}));
}

void TestAccessibleView::aListOfOneSelectedRowKeepsItsRow()
{
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    QVERIFY(table()->selectRow(1));
    QVERIFY(table()->selectRow(2));
    QCOMPARE(selectedNames(*m_list), QStringList(u"Banana"_s));
    QVERIFY(!table()->unselectRow(2));
    QCOMPARE(selectedNames(*m_list), QStringList(u"Banana"_s));
}

void TestAccessibleView::theRowOfTheKeyboardIsToldWhereTheListHasIt()
{
    const Listening listening;
    click(2);
    QTest::keyClick(m_list, Qt::Key_Down);
    QVERIFY(told().contains(u"focus: avocado"_s));
    m_other->setFocus();
    told().clear();
    m_list->setCurrentIndex(m_list->rows().index(0, 0));
    QCOMPARE(told(), QStringList({u"not selected: avocado"_s, u"selected: りんご"_s}));
    told().clear();
    m_list->setFocus();
    QCOMPARE(told(), QStringList(u"focus: りんご"_s));
}

void TestAccessibleView::manySelectedRowsAreToldAsOne()
{
    ReportModel::Fill rows(m_list->rows());
    for (int row = 0; row < 100'000; ++row)
        rows.append({u"名称", u"定義", u"M-991231-001"});
    rows.finish();
    click(1);
    const Listening listening;
    QTest::keyClick(m_list, Qt::Key_A, Qt::ControlModifier);
    QVERIFY2(told().size() <= 1, qPrintable(QString::number(told().size())));
    QCOMPARE(table()->selectedRowCount(), 100'005);
    QCOMPARE(table()->selectedRows().size(), 100'005);
    QVERIFY(table()->selectedCells().size() <= 30'000);
}

void TestAccessibleView::pressingARowOpensIt()
{
    const QSignalSpy rowOpened(m_list, &ReportList::rowDoubleClicked);
    const QSignalSpy listOpened(m_list, &ReportList::listDoubleClicked);
    m_other->setFocus();
    click(0);
    press(cell(3, 2), QAccessibleActionInterface::pressAction());
    QCOMPARE(rowOpened.size(), 1);
    QCOMPARE(listOpened.size(), 1);
    QCOMPARE(selectedNames(*m_list), QStringList(u"avocado"_s));
    QVERIFY(m_list->hasFocus());
}

void TestAccessibleView::theMenuOfARowOpens()
{
    const QSignalSpy menu(m_list, &ReportList::menuRequested);
    press(cell(4), QAccessibleActionInterface::showMenuAction());
    QCOMPARE(menu.size(), 1);
    QCOMPARE(selectedNames(*m_list), QStringList(u"水"_s));
    const QSignalSpy menuOfNode(m_tree.get(), &KeyedTree::menuRequested);
    m_tree->show();
    press(node(0), QAccessibleActionInterface::showMenuAction());
    QCOMPARE(menuOfNode.size(), 1);
    QCOMPARE(m_tree->selectedPosition(), 1);
}

void TestAccessibleView::theFocusGoesToTheRow()
{
    m_other->setFocus();
    click(0);
    m_other->setFocus();
    press(cell(2), QAccessibleActionInterface::setFocusAction());
    QVERIFY(m_list->hasFocus());
    QCOMPARE(selectedNames(*m_list), QStringList(u"Banana"_s));
    m_other->setFocus();
    press(list(), QAccessibleActionInterface::setFocusAction());
    QVERIFY(m_list->hasFocus());
}

void TestAccessibleView::pressingAHeaderSorts()
{
    QAccessibleInterface* header = list()->child(0);
    QVERIFY(header->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()));
    press(header, QAccessibleActionInterface::pressAction());
    QCOMPARE(m_list->rows().text(0, 0), u"apple"_s);
}

void TestAccessibleView::nothingActsBehindABox()
{
    const QSignalSpy opened(m_list, &ReportList::rowDoubleClicked);
    QMessageBox box(m_window.get());
    box.setModal(true);
    box.show();
    QVERIFY(!table()->selectRow(1));
    press(cell(1), QAccessibleActionInterface::pressAction());
    press(list()->child(0), QAccessibleActionInterface::pressAction());
    QCOMPARE(opened.size(), 0);
    QCOMPARE(selectedNames(*m_list), QStringList());
    QCOMPARE(m_list->rows().text(0, 0), u"りんご"_s);
    box.close();
    QVERIFY(table()->selectRow(1));
}

void TestAccessibleView::leavesAreNeitherOpenNorClosed()
{
    m_tree->expandAll();
    m_tree->expandNode(2);
    const QAccessible::State leaf = node(1)->state();
    QCOMPARE(nameOf(node(1)), u"定義"_s);
    QVERIFY(!leaf.expanded);
    QVERIFY(!leaf.expandable);
    QVERIFY(!leaf.collapsed);
    QVERIFY(!node(1)->actionInterface()->actionNames().contains(QAccessibleActionInterface::toggleAction()));
    const QAccessible::State branch = node(2)->state();
    QVERIFY(branch.expanded);
    QVERIFY(branch.expandable);
    m_tree->nodes().remove(4);
    QVERIFY(!node(2)->state().expanded);
}

void TestAccessibleView::aTreeShowsWhatNoClosedBranchHides()
{
    QCOMPARE(tree()->role(), QAccessible::Tree);
    QCOMPARE(nodes(), QStringList(u"全部"_s));
    m_tree->expandNode(1);
    QCOMPARE(nodes(), QStringList({u"全部"_s, u"定義"_s, u"文献"_s}));
    m_tree->expandNode(3);
    QCOMPARE(nodes(), QStringList({u"全部"_s, u"定義"_s, u"文献"_s, u"古い文献"_s}));
    QAccessibleInterface* old = node(3);
    QCOMPARE(old->tableCellInterface()->rowIndex(), 3);
    QCOMPARE(tree()->indexOfChild(old), 3);
    m_tree->nodes().add(u"A", u"E", u"新しい");
    QCOMPARE(nodes().last(), u"新しい"_s);
    m_tree->collapse(m_tree->nodes().indexOf(1));
    QCOMPARE(nodes(), QStringList(u"全部"_s));
    QCOMPARE(old->tableCellInterface()->rowIndex(), -1);
}

void TestAccessibleView::openingAndClosingABranchIsTold()
{
    const Listening listening;
    m_tree->expandNode(1);
    m_tree->collapse(m_tree->nodes().indexOf(1));
    QCOMPARE(told(), QStringList({u"open: 全部"_s, u"closed: 全部"_s}));
}

void TestAccessibleView::aNodeChosenFromOutsideIsToldAsChosen()
{
    m_tree->expandAll();
    m_tree->select(1);
    const QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    const Listening listening;
    QVERIFY(tree()->tableInterface()->selectRow(2));
    QCOMPARE(chosen.size(), 0); // what it leads to must not keep the one outside waiting
    QCoreApplication::processEvents();
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen[0][0].toInt(), 3);
    QCOMPARE(m_tree->selectedPosition(), 3);
    QVERIFY(told().contains(u"selected: 文献"_s));
    QVERIFY(told().contains(u"not selected: 全部"_s));
    QVERIFY(!tree()->tableInterface()->unselectRow(2));
    QCOMPARE(m_tree->selectedPosition(), 3);
    QCOMPARE(tree()->tableInterface()->selectedRows(), QList<int>{2});
}

void TestAccessibleView::aNodeThatIsSelectedAlreadyIsNotChosenAgain()
{
    m_tree->select(1);
    const QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    QVERIFY(tree()->tableInterface()->selectRow(0));
    QCoreApplication::processEvents();
    QCOMPARE(chosen.size(), 0);
}

void TestAccessibleView::pressingANodeIsAClick()
{
    m_tree->expandAll();
    const QSignalSpy chosen(m_tree.get(), &KeyedTree::nodeChosen);
    const QSignalSpy clicked(m_tree.get(), &KeyedTree::nodeClicked);
    for (int time = 1; time <= 2; ++time) {
        press(node(1), QAccessibleActionInterface::pressAction());
        QCOMPARE(clicked.size(), time);
        QCOMPARE(clicked.last()[0].toInt(), 2);
        QCOMPARE(chosen.size(), 0);
    }
}

void TestAccessibleView::branchesAreTurnedFromOutside()
{
    press(node(0), QAccessibleActionInterface::toggleAction());
    QVERIFY(node(0)->state().expanded);
    QCOMPARE(nodes().size(), 3);
    press(node(0), QAccessibleActionInterface::toggleAction());
    QVERIFY(node(0)->state().collapsed);
    QCOMPARE(nodes().size(), 1);
}

void TestAccessibleView::removedNodesAreGone()
{
    m_tree->expandAll();
    const QAccessible::Id gone = QAccessible::uniqueId(node(1));
    QAccessibleInterface* literature = node(2);
    m_tree->nodes().remove(2);
    QVERIFY(QAccessible::accessibleInterface(gone) == nullptr);
    QCOMPARE(nameOf(literature), u"文献"_s);
    QCOMPARE(node(1), literature);
    m_tree->nodes().clear();
    QCOMPARE(tree()->childCount(), 0);
}

void TestAccessibleView::allNamesOfALongListAreReadInPieces()
{
    constexpr int Rows = 125'000;
    {
        ReportModel::Fill rows(m_list->rows());
        for (int row = 0; row < Rows; ++row)
            rows.append({QString(u"名称 "_s + QString::number(row)), u"定義", u"M-991231-001"});
        rows.finish();
    }
    // Each question is answered by itself, whatever has been asked before: none keeps the program for long.
    qint64 longest = 0;
    QElapsedTimer timer;
    for (int row = 0; row < Rows; ++row) {
        timer.start();
        const QString name = nameOf(cell(row + 5));
        longest = std::max(longest, timer.elapsed());
        QCOMPARE(name, u"名称 "_s + QString::number(row));
    }
    QVERIFY2(longest < 500, qPrintable(QString::number(longest)));
    m_list->rows().sortByColumn(0);
    QVERIFY(nameOf(cell(0)) == u"apple"_s);
}

QTEST_MAIN(TestAccessibleView)
#include "test_accessible_view.moc"
