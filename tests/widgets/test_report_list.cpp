#include "ui/widgets/report_list.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <QtTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using quillon::ReportList;
using quillon::ReportModel;

namespace
{

const std::vector<ReportModel::Column> Columns = {
    {u"名称"_s, ReportModel::Storage::Text},
    {u"種別"_s, ReportModel::Storage::Word},
    {u"ＩＤ"_s, ReportModel::Storage::Text},
};

void fill(ReportList& list, const QStringList& names)
{
    ReportModel::Fill rows(list.rows());
    int number = 0;
    for (const QString& name : names)
        rows.append({name, u"定義", u"M-%1"_s.arg(++number)});
}

QStringList selectedNames(const ReportList& list)
{
    QStringList names;
    for (const int row : list.selectedRows())
        names << list.rows().text(row, 0).toString();
    return names;
}

/// A window that writes down what its controls did not handle.
class Window : public QWidget
{
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys << event->key(); }
};

} // namespace

class TestReportList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_window.reset(); }

    void aClickSelectsOneRow();
    void controlAndShiftSelectMore();
    void allRowsAreSelectedAtOnce();
    void theSelectedRowIsTheCurrentOneIfSelected();
    void arrowsMoveByRows();
    void homeAndEndGoToTheEnds();
    void pagesMoveByTheHeightOfTheList();
    void shiftAndArrowsExtendTheSelection();
    void sidewaysKeysScroll();
    void theCurrentCellStaysInTheFirstColumn();
    void typingGoesToTheNextMatchingRow();
    void typingIgnoresCase();
    void aComposedTextIsSearched();
    void enterActivatesOnceAndStopsThere();
    void enterWithoutRowsActivatesToo();
    void otherKeysAreToldAndReachTheWindow();
    void lettersAreNotToldAsKeys();
    void aReleaseWithoutAPressIsNotTold();
    void tabLeavesTheList();
    void aDoubleClickOnARowActivates();
    void aDoubleClickElsewhereDoesNot();
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
    void textIsShownOnOneLineAndKept();
    void mouseMovesAreTold();
    void removingManyRowsKeepsThePlace();
    void aMillionRowsCanBeSelectedAndSearched();
    void assistiveTechnologyReadsCellsAndHeaders();

private:
    QPoint at(int row, int column = 0) const
    {
        return m_list->visualRect(m_list->rows().index(row, column)).center();
    }
    void click(int row, Qt::KeyboardModifiers modifiers = {}, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(m_list->viewport(), button, modifiers, at(row));
    }
    /// A key with modifiers that have been down before; keyClick would press them too.
    void sendKey(int key, Qt::KeyboardModifiers modifiers)
    {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, modifiers);
            QCoreApplication::sendEvent(m_list, &event);
        }
    }
    void moveWithLeftButton(const QPoint& position)
    {
        QMouseEvent move(QEvent::MouseMove, position, m_list->viewport()->mapToGlobal(position), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_list->viewport(), &move);
    }

    std::unique_ptr<Window> m_window;
    ReportList* m_list = nullptr;
    QLineEdit* m_other = nullptr;
};

void TestReportList::init()
{
    m_window = std::make_unique<Window>();
    m_list = new ReportList(Columns);
    m_other = new QLineEdit;
    auto* layout = new QVBoxLayout(m_window.get());
    layout->addWidget(m_list);
    layout->addWidget(m_other);
    m_list->setColumnCharacters({20, 10, 14});
    m_window->resize(600, 400);
    m_window->show();
    m_window->activateWindow();
    m_list->setFocus();
    fill(*m_list, {u"りんご"_s, u"apple"_s, u"Banana"_s, u"avocado"_s, u"水"_s});
}

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

void TestReportList::arrowsMoveByRows()
{
    QTest::keyClick(m_list, Qt::Key_Down);
    QCOMPARE(m_list->selectedRow(), 0);
    QTest::keyClick(m_list, Qt::Key_Down);
    QTest::keyClick(m_list, Qt::Key_Down);
    QCOMPARE(m_list->selectedRow(), 2);
    QTest::keyClick(m_list, Qt::Key_Up);
    QCOMPARE(selectedNames(*m_list), QStringList(u"apple"_s));
}

void TestReportList::homeAndEndGoToTheEnds()
{
    click(2);
    QTest::keyClick(m_list, Qt::Key_End);
    QCOMPARE(selectedNames(*m_list), QStringList(u"水"_s));
    QTest::keyClick(m_list, Qt::Key_Home);
    QCOMPARE(selectedNames(*m_list), QStringList(u"りんご"_s));
}

void TestReportList::pagesMoveByTheHeightOfTheList()
{
    QStringList names;
    for (int row = 0; row < 500; ++row)
        names << QString::number(row);
    fill(*m_list, names);
    QTest::keyClick(m_list, Qt::Key_Home);
    QTest::keyClick(m_list, Qt::Key_PageDown);
    const int page = m_list->selectedRow();
    QVERIFY(page > 1 && page < 100);
    QTest::keyClick(m_list, Qt::Key_PageDown);
    QCOMPARE(m_list->selectedRow(), 2 * page);
    QTest::keyClick(m_list, Qt::Key_PageUp);
    QTest::keyClick(m_list, Qt::Key_PageUp);
    QTest::keyClick(m_list, Qt::Key_PageUp);
    QCOMPARE(m_list->selectedRow(), 0);
}

void TestReportList::shiftAndArrowsExtendTheSelection()
{
    click(1);
    QTest::keyClick(m_list, Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{1, 2}));
    QTest::keyClick(m_list, Qt::Key_End, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{1, 2, 3, 4}));
    QTest::keyClick(m_list, Qt::Key_Home, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{0, 1}));
}

void TestReportList::sidewaysKeysScroll()
{
    m_list->setColumnCharacters({100, 100, 100});
    QCoreApplication::processEvents();
    click(1);
    QScrollBar* bar = m_list->horizontalScrollBar();
    QVERIFY(bar->maximum() > 0);
    QTest::keyClick(m_list, Qt::Key_Right);
    const int scrolled = bar->value();
    QVERIFY(scrolled > 0);
    QTest::keyClick(m_list, Qt::Key_Down);
    QCOMPARE(bar->value(), scrolled);
    QCOMPARE(m_list->selectedRow(), 2);
    QTest::keyClick(m_list, Qt::Key_Left);
    QCOMPARE(bar->value(), 0);
    QCOMPARE(m_list->selectedRow(), 2);
}

void TestReportList::theCurrentCellStaysInTheFirstColumn()
{
    QTest::mouseClick(m_list->viewport(), Qt::LeftButton, {}, at(2, 2));
    QCOMPARE(m_list->currentIndex(), m_list->rows().index(2, 0));
}

void TestReportList::typingGoesToTheNextMatchingRow()
{
    m_list->keyboardSearch(u"水"_s);
    QCOMPARE(selectedNames(*m_list), QStringList(u"水"_s));
    click(0); // ends what was typed
    QTest::keyClick(m_list, Qt::Key_A);
    QCOMPARE(selectedNames(*m_list), QStringList(u"apple"_s));
    click(1);
    QTest::keyClick(m_list, Qt::Key_A);
    QCOMPARE(selectedNames(*m_list), QStringList(u"avocado"_s));
    click(3);
    QTest::keyClick(m_list, Qt::Key_A);
    QCOMPARE(selectedNames(*m_list), QStringList(u"apple"_s));
    click(1);
    QTest::keyClick(m_list, Qt::Key_Z);
    QCOMPARE(selectedNames(*m_list), QStringList(u"apple"_s));
}

void TestReportList::typingIgnoresCase()
{
    QTest::keyClick(m_list, Qt::Key_B);
    QCOMPARE(selectedNames(*m_list), QStringList(u"Banana"_s));
}

void TestReportList::aComposedTextIsSearched()
{
    click(0);
    QVERIFY(m_list->testAttribute(Qt::WA_InputMethodEnabled));
    QInputMethodEvent composing(u"みず"_s, {});
    QCoreApplication::sendEvent(m_list, &composing);
    QCOMPARE(m_list->selectedRow(), 0);
    QInputMethodEvent committed;
    committed.setCommitString(u"水"_s);
    QCoreApplication::sendEvent(m_list, &committed);
    QCOMPARE(selectedNames(*m_list), QStringList(u"水"_s));
}

void TestReportList::enterActivatesOnceAndStopsThere()
{
    const QSignalSpy activated(m_list, &ReportList::rowActivated);
    const QSignalSpy pressed(m_list, &ReportList::keyPressed);
    const QSignalSpy released(m_list, &ReportList::keyReleased);
    click(1);
    QTest::keyClick(m_list, Qt::Key_Return);
    QCOMPARE(activated.size(), 1);
    QTest::keyClick(m_list, Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(activated.size(), 2);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(m_list, &repeated);
    QCOMPARE(activated.size(), 2);
    QVERIFY(m_window->keys.isEmpty());
    QCOMPARE(pressed.size(), 0);
    QCOMPARE(released.size(), 0);
}

void TestReportList::enterWithoutRowsActivatesToo()
{
    m_list->rows().clear();
    const QSignalSpy activated(m_list, &ReportList::rowActivated);
    QTest::keyClick(m_list, Qt::Key_Return);
    QCOMPARE(activated.size(), 1);
}

void TestReportList::otherKeysAreToldAndReachTheWindow()
{
    QSignalSpy pressed(m_list, &ReportList::keyPressed);
    QSignalSpy released(m_list, &ReportList::keyReleased);
    sendKey(Qt::Key_Insert, Qt::ShiftModifier);
    QTest::keyClick(m_list, Qt::Key_Delete);
    QTest::keyClick(m_list, Qt::Key_F2);
    QTest::keyClick(m_list, Qt::Key_Escape);
    QCOMPARE(pressed.size(), 4);
    QCOMPARE(pressed[0][0].toInt(), static_cast<int>(Qt::Key_Insert));
    QCOMPARE(pressed[0][1].value<Qt::KeyboardModifiers>(), Qt::ShiftModifier);
    QCOMPARE(pressed[1][0].toInt(), static_cast<int>(Qt::Key_Delete));
    QCOMPARE(released.size(), 4);
    QCOMPARE(released[3][0].toInt(), static_cast<int>(Qt::Key_Escape));
    for (const int key : {Qt::Key_Insert, Qt::Key_Delete, Qt::Key_F2, Qt::Key_Escape})
        QCOMPARE(m_window->keys.count(key), 1);
}

void TestReportList::lettersAreNotToldAsKeys()
{
    const QSignalSpy pressed(m_list, &ReportList::keyPressed);
    QTest::keyClick(m_list, Qt::Key_B);
    QCOMPARE(pressed.size(), 0);
    sendKey(Qt::Key_B, Qt::ControlModifier);
    QCOMPARE(pressed.size(), 1);
}

void TestReportList::aReleaseWithoutAPressIsNotTold()
{
    const QSignalSpy released(m_list, &ReportList::keyReleased);
    QTest::keyRelease(m_list, Qt::Key_Escape);
    QCOMPARE(released.size(), 0);
}

void TestReportList::tabLeavesTheList()
{
    m_list->setFocus();
    QTest::keyClick(m_list, Qt::Key_Tab);
    QCOMPARE(m_window->focusWidget(), m_other);
}

void TestReportList::aDoubleClickOnARowActivates()
{
    const QSignalSpy activated(m_list, &ReportList::rowActivated);
    click(2);
    QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, at(2));
    QCOMPARE(activated.size(), 1);
    QCOMPARE(m_list->selectedRow(), 2);
}

void TestReportList::aDoubleClickElsewhereDoesNot()
{
    const QSignalSpy activated(m_list, &ReportList::rowActivated);
    QTest::mouseDClick(m_list->viewport(), Qt::RightButton, {}, at(2));
    QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, m_list->viewport()->rect().bottomLeft());
    QCOMPARE(activated.size(), 0);
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
    QVERIFY(moved.size() >= 1);
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
    {
        ReportModel::Fill rows(m_list->rows());
        for (int row = 0; row < 1'000'000; ++row)
            rows.append({u"名称", u"定義", u"M-991231-001"});
        rows.append({u"zebra", u"定義", u"M-991231-002"});
    }
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
