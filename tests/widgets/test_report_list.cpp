// The mouse, the selection, sorting and the looks of a report list.
#include "tests/widgets/report_list_fixture.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QSignalSpy>
#include <QStyledItemDelegate>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::testing;
using quillon::ReportList;
using quillon::ReportModel;

class TestReportList : public ReportListFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { makeList(); }
    void cleanup() { takeDown(); }

    void aClickSelectsOneRow();
    void controlAndShiftSelectMore();
    void allRowsAreSelectedAtOnce();
    void theSelectedRowIsTheCurrentOneIfSelected();
    void aDoubleClickOnARowActivates();
    void aDoubleClickElsewhereDoesNot();
    void aDoubleClickOnRowsThatCameMeanwhileDoesNot();
    void aDoubleClickBesideTheRowsIsTold();
    void theMenuSelectsTheRowUnderTheMouse();
    void theMenuKeepsASelectionOfSeveral();
    void theMenuKeyOpensAtTheCurrentRow();
    void theMenuOpensOnTheEmptyArea();
    void aRubberBandBeginsOnTheEmptyArea();
    void draggingAcrossRowsSelectsThemWithoutADragColumn();
    void pressingOnASelectedRowKeepsTheOthersForADrag();
    void aPlainClickOnASelectionLeavesOneRow();
    void aHeaderClickSortsAndShowsIt();
    void aSecondHeaderClickDoesNotTurnTheOrder();
    void aFillEndsTheSortIndicator();
    void headerClicksKeepTheSelection();
    void rowHeightFollowsTheFont();
    void chosenColumnsShareTheRoomThatIsLeft();
    void aColumnThatThePersonResizedStaysSo();
    void aNarrowListKeepsTheWidthsOfAllColumns();
    void textIsShownOnOneLineAndKept();
    void mouseMovesAreTold();
    void removingManyRowsKeepsThePlace();
    void aMillionRowsCanBeSelectedAndSearched();
    void assistiveTechnologyReadsCellsAndHeaders();
};

void TestReportList::aClickSelectsOneRow()
{
    QCOMPARE(m_list->selectedRow(), -1);
    click(1);
    QCOMPARE(m_list->selectedRow(), 1);
    QVERIFY(!m_list->moreThanOneSelected());
    click(3);
    QCOMPARE(selectedNames(*m_list), QStringList(u"avocado"_s));
    QCOMPARE(m_list->selectionModel()->selectedIndexes().size(), 3);
}

void TestReportList::controlAndShiftSelectMore()
{
    click(1);
    click(3, Qt::ControlModifier);
    QVERIFY(m_list->moreThanOneSelected());
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{1, 3}));
    click(0);
    click(2, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{0, 1, 2}));
    click(1, Qt::ControlModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{0, 2}));
}

void TestReportList::allRowsAreSelectedAtOnce()
{
    QTest::keyClick(m_list, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(m_list->selectedRows().size(), std::size_t(5));
}

void TestReportList::theSelectedRowIsTheCurrentOneIfSelected()
{
    click(1);
    click(3, Qt::ControlModifier);
    QCOMPARE(m_list->selectedRow(), 3);
    click(3, Qt::ControlModifier);
    QCOMPARE(m_list->selectedRow(), 1);
    m_list->clearSelection();
    QCOMPARE(m_list->selectedRow(), -1);
}

void TestReportList::aDoubleClickOnARowActivates()
{
    const QSignalSpy activated(m_list, &ReportList::rowDoubleClicked);
    const QSignalSpy doubleClicked(m_list, &ReportList::listDoubleClicked);
    const QSignalSpy entered(m_list, &ReportList::enterPressed);
    click(2);
    QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, at(2));
    QCOMPARE(activated.size(), 1);
    QCOMPARE(doubleClicked.size(), 1);
    QCOMPARE(entered.size(), 0);
    QCOMPARE(m_list->selectedRow(), 2);
}

void TestReportList::aDoubleClickOnRowsThatCameMeanwhileDoesNot()
{
    const QSignalSpy activated(m_list, &ReportList::rowDoubleClicked);
    const QSignalSpy doubleClicked(m_list, &ReportList::listDoubleClicked);
    const QPoint place = m_list->visualRect(m_list->rows().index(1, 0)).center();
    QTest::mouseClick(m_list->viewport(), Qt::LeftButton, {}, place);
    m_list->rows().clear();
    fill(*m_list, {u"他"_s, u"別"_s, u"第三"_s});
    QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, place);
    QCOMPARE(activated.size() + doubleClicked.size(), 0);
    QCOMPARE(selectedNames(*m_list), QStringList({u"別"_s})); // as by a click
    QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, place);
    QCOMPARE(activated.size(), 1);
}

void TestReportList::aDoubleClickElsewhereDoesNot()
{
    const QSignalSpy activated(m_list, &ReportList::rowDoubleClicked);
    QTest::mouseDClick(m_list->viewport(), Qt::RightButton, {}, at(2));
    QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, m_list->viewport()->rect().bottomLeft());
    QCOMPARE(activated.size(), 0);
}

void TestReportList::aDoubleClickBesideTheRowsIsTold()
{
    const QSignalSpy doubleClicked(m_list, &ReportList::listDoubleClicked);
    QTest::mouseDClick(m_list->viewport(), Qt::RightButton, {}, at(2));
    QCOMPARE(doubleClicked.size(), 0);
    QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, m_list->viewport()->rect().bottomLeft());
    QCOMPARE(doubleClicked.size(), 1);
    m_list->rows().clear();
    QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
    QCOMPARE(doubleClicked.size(), 2);
}

void TestReportList::theMenuSelectsTheRowUnderTheMouse()
{
    QSignalSpy menu(m_list, &ReportList::menuRequested);
    click(0);
    const QPoint global = m_list->viewport()->mapToGlobal(at(2));
    QTest::mousePress(m_list->viewport(), Qt::RightButton, {}, at(2));
    QContextMenuEvent event(QContextMenuEvent::Mouse, at(2), global);
    QCoreApplication::sendEvent(m_list->viewport(), &event);
    QCOMPARE(selectedNames(*m_list), QStringList(u"Banana"_s));
    QCOMPARE(menu.size(), 1);
    QCOMPARE(menu[0][0].toPoint(), global);
}

void TestReportList::theMenuKeepsASelectionOfSeveral()
{
    click(0);
    click(2, Qt::ShiftModifier);
    QTest::mouseClick(m_list->viewport(), Qt::RightButton, {}, at(1));
    QContextMenuEvent event(QContextMenuEvent::Mouse, at(1), m_list->viewport()->mapToGlobal(at(1)));
    QCoreApplication::sendEvent(m_list->viewport(), &event);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{0, 1, 2}));
}

void TestReportList::theMenuKeyOpensAtTheCurrentRow()
{
    QSignalSpy menu(m_list, &ReportList::menuRequested);
    click(3);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QCoreApplication::sendEvent(m_list->viewport(), &event);
    QCOMPARE(menu.size(), 1);
    const QPoint inside = m_list->viewport()->mapFromGlobal(menu[0][0].toPoint());
    QCOMPARE(m_list->rowAt(inside.y()), 3);
    QVERIFY(event.isAccepted());
}

void TestReportList::theMenuOpensOnTheEmptyArea()
{
    const QSignalSpy menu(m_list, &ReportList::menuRequested);
    const QPoint empty = m_list->viewport()->rect().bottomLeft() + QPoint(5, -5);
    QContextMenuEvent event(QContextMenuEvent::Mouse, empty, m_list->viewport()->mapToGlobal(empty));
    QCoreApplication::sendEvent(m_list->viewport(), &event);
    QCOMPARE(menu.size(), 1);
}

void TestReportList::aRubberBandBeginsOnTheEmptyArea()
{
    m_list->rows().setDragColumn(2);
    const QPoint empty = m_list->viewport()->rect().bottomLeft() + QPoint(5, -5);
    QTest::mousePress(m_list->viewport(), Qt::LeftButton, {}, empty);
    moveWithLeftButton(at(4));
    moveWithLeftButton(at(3));
    QTest::mouseRelease(m_list->viewport(), Qt::LeftButton, {}, at(3));
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{3, 4}));
}

void TestReportList::draggingAcrossRowsSelectsThemWithoutADragColumn()
{
    QTest::mousePress(m_list->viewport(), Qt::LeftButton, {}, at(1));
    moveWithLeftButton(at(2));
    moveWithLeftButton(at(3));
    QTest::mouseRelease(m_list->viewport(), Qt::LeftButton, {}, at(3));
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{1, 2, 3}));
}

void TestReportList::pressingOnASelectedRowKeepsTheOthersForADrag()
{
    m_list->rows().setDragColumn(2);
    click(1);
    click(3, Qt::ShiftModifier);
    QTest::mousePress(m_list->viewport(), Qt::LeftButton, {}, at(2));
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{1, 2, 3}));
    QCOMPARE(m_list->selectedRow(), 2);
    QTest::mouseRelease(m_list->viewport(), Qt::LeftButton, {}, at(2));
}

void TestReportList::aPlainClickOnASelectionLeavesOneRow()
{
    m_list->rows().setDragColumn(2);
    click(1);
    click(3, Qt::ShiftModifier);
    click(2);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{2}));
}

void TestReportList::aHeaderClickSortsAndShowsIt()
{
    QSignalSpy clicked(m_list, &ReportList::columnClicked);
    QHeaderView* header = m_list->horizontalHeader();
    QVERIFY(!header->isSortIndicatorShown());
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(10, header->height() / 2));
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(clicked[0][0].toInt(), 0);
    QCOMPARE(m_list->rows().text(0, 0), u"apple"_s);
    QVERIFY(header->isSortIndicatorShown());
    QCOMPARE(header->sortIndicatorSection(), 0);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
}

void TestReportList::aSecondHeaderClickDoesNotTurnTheOrder()
{
    QHeaderView* header = m_list->horizontalHeader();
    for (int time = 0; time < 2; ++time)
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(10, header->height() / 2));
    QCOMPARE(m_list->rows().text(0, 0), u"apple"_s);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
}

void TestReportList::aFillEndsTheSortIndicator()
{
    QHeaderView* header = m_list->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(10, header->height() / 2));
    m_list->rows().clear();
    QVERIFY(!header->isSortIndicatorShown());
    const int width = m_list->columnWidth(0);
    fill(*m_list, {u"b"_s, u"a"_s});
    QCOMPARE(m_list->rows().text(0, 0), u"b"_s);
    QCOMPARE(m_list->columnWidth(0), width);
}

void TestReportList::headerClicksKeepTheSelection()
{
    click(4);
    QHeaderView* header = m_list->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(10, header->height() / 2));
    QCOMPARE(selectedNames(*m_list), QStringList(u"水"_s));
    QVERIFY(!m_list->moreThanOneSelected());
}

void TestReportList::chosenColumnsShareTheRoomThatIsLeft()
{
    const int names = m_list->columnWidth(0);
    const int kinds = m_list->columnWidth(1);
    const int identifiers = m_list->columnWidth(2);
    m_list->giveRoomTo({0, 2});
    for (const int width : {900, 1201, 700}) {
        m_window->resize(width, 400);
        QCoreApplication::processEvents();
        QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
        QCOMPARE(m_list->columnWidth(1), kinds);
        QVERIFY(qAbs((m_list->columnWidth(0) - names) - (m_list->columnWidth(2) - identifiers)) <= 1);
    }
    // Also where the rows need a scroll bar, and in another font.
    fill(*m_list, QStringList(100, u"名"_s));
    QCoreApplication::processEvents();
    QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
    QFont large = m_list->font();
    large.setPointSize(large.pointSize() * 3 / 2);
    m_list->setFont(large);
    m_window->resize(1200, 400);
    QCoreApplication::processEvents();
    QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
    QVERIFY(m_list->columnWidth(1) > kinds);
}

void TestReportList::aColumnThatThePersonResizedStaysSo()
{
    m_list->giveRoomTo({0, 2});
    m_window->resize(900, 400);
    QCoreApplication::processEvents();
    const int edge = m_list->horizontalHeader()->sectionViewportPosition(0) + m_list->columnWidth(0) - 1;
    const int before = m_list->columnWidth(0);
    QWidget* header = m_list->horizontalHeader()->viewport();
    QTest::mousePress(header, Qt::LeftButton, {}, QPoint(edge, 5));
    QTest::mouseMove(header, QPoint(edge - 60, 5));
    QTest::mouseRelease(header, Qt::LeftButton, {}, QPoint(edge - 60, 5));
    QCOMPARE(m_list->columnWidth(0), before - 60);
    m_window->resize(1000, 400);
    QCoreApplication::processEvents();
    QCOMPARE(m_list->columnWidth(0), before - 60);
    QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width()); // the other took all of it
}

void TestReportList::aNarrowListKeepsTheWidthsOfAllColumns()
{
    const int length = m_list->horizontalHeader()->length();
    m_list->giveRoomTo({0});
    m_window->resize(200, 400);
    QCoreApplication::processEvents();
    QCOMPARE(m_list->horizontalHeader()->length(), length);
}

void TestReportList::rowHeightFollowsTheFont()
{
    const int before = m_list->rowHeight(0);
    const int width = m_list->columnWidth(0);
    QFont font = m_list->font();
    font.setPointSize(font.pointSize() * 2);
    m_list->setFont(font);
    QVERIFY(m_list->rowHeight(0) > before);
    QVERIFY(m_list->rowHeight(4) >= QFontMetrics(font).height());
    QVERIFY(m_list->columnWidth(0) > width);
}

void TestReportList::textIsShownOnOneLineAndKept()
{
    const QString text = u"一行目\r\n<b>二</b>\t三\u2028"_s + QChar(0) + u"終"_s;
    fill(*m_list, {text, QString(100000, u'長')});
    const auto* delegate = qobject_cast<QStyledItemDelegate*>(m_list->itemDelegate());
    QVERIFY(delegate != nullptr);
    const QString shown = delegate->displayText(m_list->rows().index(5, 0).data(), QLocale());
    QCOMPARE(shown, u"一行目  <b>二</b> 三  終"_s);
    QCOMPARE(m_list->rows().index(5, 0).data().toString(), text);
    QVERIFY(delegate->displayText(m_list->rows().index(6, 0).data(), QLocale()).size() >= 500);
    QVERIFY(!m_list->grab().isNull());
}

void TestReportList::mouseMovesAreTold()
{
    const QSignalSpy moved(m_list, &ReportList::mouseMoved);
    QTest::mouseMove(m_list->viewport(), at(1));
    QMouseEvent move(QEvent::MouseMove, at(2), m_list->viewport()->mapToGlobal(at(2)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_list->viewport(), &move);
    QVERIFY(!moved.isEmpty());
    QVERIFY(m_list->viewport()->hasMouseTracking());
    QCOMPARE(m_list->selectedRow(), -1);
}

void TestReportList::removingManyRowsKeepsThePlace()
{
    QStringList names;
    for (int row = 0; row < 1000; ++row)
        names << QString::number(row);
    m_list->rows().clear();
    fill(*m_list, names);
    std::vector<int> gone;
    for (int row = 100; row < 500; row += 2)
        gone.push_back(row);
    m_list->selectionModel()->setCurrentIndex(
        m_list->rows().index(200, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_list->rows().removeRowsAt(gone);
    QCOMPARE(m_list->rows().rowCount(), 800);
    QCOMPARE(m_list->selectedRow(), -1);
    QCOMPARE(m_list->currentIndex().row(), 100);
}

void TestReportList::aMillionRowsCanBeSelectedAndSearched()
{
    ReportModel::Fill rows(m_list->rows());
    for (int row = 0; row < 1'000'000; ++row)
        rows.append({u"名称", u"定義", u"M-991231-001"});
    rows.append({u"zebra", u"定義", u"M-991231-002"});
    rows.finish();
    QTest::keyClick(m_list, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(m_list->selectedRows().size(), std::size_t(1'000'006));
    QVERIFY(m_list->moreThanOneSelected());
    QTest::keyClick(m_list, Qt::Key_Z);
    QCOMPARE(m_list->selectedRow(), 1'000'005);
    QCOMPARE(m_list->rowAt(at(1'000'005).y()), 1'000'005);
    QTest::keyClick(m_list, Qt::Key_Home, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows().size(), std::size_t(1'000'006));
}

void TestReportList::assistiveTechnologyReadsCellsAndHeaders()
{
    m_list->setAccessibleName(u"データ一覧"_s);
    QAccessibleInterface* view = QAccessible::queryAccessibleInterface(m_list);
    QVERIFY(view != nullptr);
    QCOMPARE(view->text(QAccessible::Name), u"データ一覧"_s);
    QAccessibleTableInterface* table = view->tableInterface();
    QVERIFY(table != nullptr);
    QCOMPARE(table->rowCount(), 5);
    QCOMPARE(table->columnCount(), 3);
    QCOMPARE(table->columnDescription(0), u"名称"_s);
    QCOMPARE(table->columnDescription(2), u"ＩＤ"_s);
    QCOMPARE(table->cellAt(1, 0)->text(QAccessible::Name), u"apple"_s);
    QCOMPARE(table->cellAt(4, 2)->text(QAccessible::Name), u"M-5"_s);
    click(1);
    QVERIFY(table->isRowSelected(1));
    QCOMPARE(table->selectedRowCount(), 1);
    QVERIFY(table->cellAt(1, 0)->state().selected);
}

QTEST_MAIN(TestReportList)
#include "test_report_list.moc"
