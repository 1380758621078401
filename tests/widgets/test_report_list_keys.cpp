// The keyboard in a report list.
#include "tests/widgets/report_list_fixture.h"

#include <QScrollBar>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::testing;
using quillon::ReportList;
using quillon::ReportModel;

class TestReportListKeys : public ReportListFixture
{
    Q_OBJECT

    /// Gives the list the focus as the Tab key does; on a row that no one has chosen yet.
    void getFocusByTab()
    {
        QCoreApplication::processEvents(); // the window becomes the active one
        m_other->setFocus();
        m_list->setFocus(Qt::TabFocusReason);
        QVERIFY(m_list->hasFocus());
    }

private Q_SLOTS:
    void init() { makeList(); }
    void cleanup() { takeDown(); }

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
    void theRowThatIsCurrentOnGettingTheFocusIsSelectedFirst_data();
    void theRowThatIsCurrentOnGettingTheFocusIsSelectedFirst();
    void theFirstRowIsOpenedByDownAndEnter();
    void controlMovesWithoutSelecting();
    void anInputMethodCanTypeAfterTheFocusReturns();
    void aHeldKeyIsToldOnce();
    void aKeyHeldSinceBeforeIsNotTold();
};

void TestReportListKeys::arrowsMoveByRows()
{
    QTest::keyClick(m_list, Qt::Key_Down);
    QCOMPARE(m_list->selectedRow(), 0);
    QTest::keyClick(m_list, Qt::Key_Down);
    QTest::keyClick(m_list, Qt::Key_Down);
    QCOMPARE(m_list->selectedRow(), 2);
    QTest::keyClick(m_list, Qt::Key_Up);
    QCOMPARE(selectedNames(*m_list), QStringList(u"apple"_s));
}

void TestReportListKeys::homeAndEndGoToTheEnds()
{
    click(2);
    QTest::keyClick(m_list, Qt::Key_End);
    QCOMPARE(selectedNames(*m_list), QStringList(u"水"_s));
    QTest::keyClick(m_list, Qt::Key_Home);
    QCOMPARE(selectedNames(*m_list), QStringList(u"りんご"_s));
}

void TestReportListKeys::pagesMoveByTheHeightOfTheList()
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

void TestReportListKeys::shiftAndArrowsExtendTheSelection()
{
    click(1);
    QTest::keyClick(m_list, Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{1, 2}));
    QTest::keyClick(m_list, Qt::Key_End, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{1, 2, 3, 4}));
    QTest::keyClick(m_list, Qt::Key_Home, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{0, 1}));
}

void TestReportListKeys::sidewaysKeysScroll()
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

void TestReportListKeys::theCurrentCellStaysInTheFirstColumn()
{
    QTest::mouseClick(m_list->viewport(), Qt::LeftButton, {}, at(2, 2));
    QCOMPARE(m_list->currentIndex(), m_list->rows().index(2, 0));
}

void TestReportListKeys::typingGoesToTheNextMatchingRow()
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

void TestReportListKeys::typingIgnoresCase()
{
    QTest::keyClick(m_list, Qt::Key_B);
    QCOMPARE(selectedNames(*m_list), QStringList(u"Banana"_s));
}

void TestReportListKeys::aComposedTextIsSearched()
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

void TestReportListKeys::enterActivatesOnceAndStopsThere()
{
    const QSignalSpy entered(m_list, &ReportList::enterPressed);
    const QSignalSpy doubleClicked(m_list, &ReportList::listDoubleClicked);
    const QSignalSpy pressed(m_list, &ReportList::keyPressed);
    const QSignalSpy released(m_list, &ReportList::keyReleased);
    click(1);
    QTest::keyClick(m_list, Qt::Key_Return);
    QCOMPARE(entered.size(), 1);
    QTest::keyClick(m_list, Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(entered.size(), 2);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(m_list, &repeated);
    QCOMPARE(entered.size(), 2);
    QCOMPARE(doubleClicked.size(), 0);
    QVERIFY(m_window->keys.isEmpty());
    QCOMPARE(pressed.size(), 0);
    QCOMPARE(released.size(), 2);
}

void TestReportListKeys::enterWithoutRowsActivatesToo()
{
    m_list->rows().clear();
    const QSignalSpy entered(m_list, &ReportList::enterPressed);
    QTest::keyClick(m_list, Qt::Key_Return);
    QCOMPARE(entered.size(), 1);
}

void TestReportListKeys::otherKeysAreToldAndReachTheWindow()
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

void TestReportListKeys::lettersAreNotToldAsKeys()
{
    const QSignalSpy pressed(m_list, &ReportList::keyPressed);
    QTest::keyClick(m_list, Qt::Key_B);
    QCOMPARE(pressed.size(), 0);
    sendKey(Qt::Key_B, Qt::ControlModifier);
    QCOMPARE(pressed.size(), 1);
}

void TestReportListKeys::aReleaseWithoutAPressIsNotTold()
{
    const QSignalSpy released(m_list, &ReportList::keyReleased);
    QTest::keyRelease(m_list, Qt::Key_Escape);
    QCOMPARE(released.size(), 0);
}

void TestReportListKeys::tabLeavesTheList()
{
    m_list->setFocus();
    QTest::keyClick(m_list, Qt::Key_Tab);
    QCOMPARE(m_window->focusWidget(), m_other);
}

void TestReportListKeys::theRowThatIsCurrentOnGettingTheFocusIsSelectedFirst_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("name");
    QTest::newRow("down") << Qt::Key_Down << u"りんご"_s;
    QTest::newRow("up") << Qt::Key_Up << u"りんご"_s;
    QTest::newRow("page down") << Qt::Key_PageDown << u"りんご"_s;
    QTest::newRow("page up") << Qt::Key_PageUp << u"りんご"_s;
    QTest::newRow("home") << Qt::Key_Home << u"りんご"_s;
    QTest::newRow("end") << Qt::Key_End << u"水"_s;
}

void TestReportListKeys::theRowThatIsCurrentOnGettingTheFocusIsSelectedFirst()
{
    QFETCH(Qt::Key, key);
    QFETCH(QString, name);
    getFocusByTab();
    QCOMPARE(m_list->currentIndex().row(), 0);
    QCOMPARE(m_list->selectedRow(), -1);
    QTest::keyClick(m_list, key);
    QCOMPARE(selectedNames(*m_list), QStringList(name));
}

void TestReportListKeys::theFirstRowIsOpenedByDownAndEnter()
{
    getFocusByTab();
    QString opened;
    connect(m_list, &ReportList::enterPressed, this,
            [&] { opened = m_list->rows().text(m_list->selectedRow(), 0).toString(); });
    QTest::keyClick(m_list, Qt::Key_Down);
    QTest::keyClick(m_list, Qt::Key_Return);
    QCOMPARE(opened, u"りんご"_s);
    QTest::keyClick(m_list, Qt::Key_Down);
    QCOMPARE(selectedNames(*m_list), QStringList(u"apple"_s));
    QTest::keyClick(m_list, Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(m_list->selectedRows(), (std::vector<int>{1, 2}));
}

void TestReportListKeys::controlMovesWithoutSelecting()
{
    getFocusByTab();
    QTest::keyClick(m_list, Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(m_list->currentIndex().row(), 1);
    QCOMPARE(m_list->selectedRow(), -1);
    QTest::keyClick(m_list, Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(selectedNames(*m_list), QStringList(u"apple"_s));
}

void TestReportListKeys::anInputMethodCanTypeAfterTheFocusReturns()
{
    click(0);
    getFocusByTab();
    QVERIFY(m_list->testAttribute(Qt::WA_InputMethodEnabled));
    m_list->rows().clear();
    getFocusByTab();
    QVERIFY(m_list->testAttribute(Qt::WA_InputMethodEnabled));
    QInputMethodQueryEvent query(Qt::ImEnabled);
    QCoreApplication::sendEvent(m_list, &query);
    QVERIFY(query.value(Qt::ImEnabled).toBool());
}

void TestReportListKeys::aHeldKeyIsToldOnce()
{
    QSignalSpy pressed(m_list, &ReportList::keyPressed);
    const QSignalSpy released(m_list, &ReportList::keyReleased);
    for (const int key : {Qt::Key_Insert, Qt::Key_Delete}) {
        pressed.clear();
        QTest::keyPress(m_list, static_cast<Qt::Key>(key));
        for (int time = 0; time < 3; ++time) {
            QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, QString(), true);
            QCoreApplication::sendEvent(m_list, &up);
            QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
            QCoreApplication::sendEvent(m_list, &down);
        }
        QCOMPARE(pressed.size(), 1);
        QTest::keyRelease(m_list, static_cast<Qt::Key>(key));
    }
    QCOMPARE(released.size(), 2);
}

void TestReportListKeys::aKeyHeldSinceBeforeIsNotTold()
{
    const QSignalSpy pressed(m_list, &ReportList::keyPressed);
    const QSignalSpy released(m_list, &ReportList::keyReleased);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier, QString(), true);
    QCoreApplication::sendEvent(m_list, &held);
    QTest::keyRelease(m_list, Qt::Key_Delete);
    QCOMPARE(pressed.size(), 0);
    QCOMPARE(released.size(), 0);
}

QTEST_MAIN(TestReportListKeys)
#include "test_report_list_keys.moc"
