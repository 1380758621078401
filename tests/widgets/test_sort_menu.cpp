// What the header of a list does for the mouse, done by keyboard: sorting, and the widths of the columns.
#include "tests/support/compare_text.h"
#include "tests/widgets/report_list_fixture.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QMenu>
#include <QSignalSpy>
#include <QToolTip>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::testing;
using quillon::ReportList;

class TestSortMenu : public ReportListFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        makeList();
        m_list->setObjectName(u"lsvData"_s);
    }
    void cleanup()
    {
        closeMenu();
        takeDown();
    }

    void everyColumnHasItsEntry();
    void hiddenColumnsHaveNone();
    void equalHeadersAreToldApart();
    void anEntrySortsAsAClickOnTheHeaderDoes();
    void theColumnOfTheSortingIsMarked();
    void keysOpenTheMenu_data();
    void keysOpenTheMenu();
    void aHeldKeyOpensOneMenu();
    void theHeadersOwnMenuSorts();
    void theHeaderTellsTheKeys();
    void theRightMouseButtonOpensNoneOnTheRows();
    void columnsAreFittedToTheirTexts_data();
    void columnsAreFittedToTheirTexts();
    void columnsAreFittedFromTheMenu();
    void fittedNamesAreWholeAndGetTheRoomThatIsLeft();
    void theWidestOfManyRowsCounts();
    void headersAreNeverCutOff();
    void aPlusThatIsTypedIsSearched();

private:
    QMenu* menu() const
    {
        QMenu* open = nullptr;
        const auto menus = m_list->findChildren<QMenu*>(u"sortMenu"_s);
        for (QMenu* candidate : menus) {
            if (candidate->isVisible())
                open = candidate;
        }
        return open;
    }
    void closeMenu() const
    {
        if (QMenu* open = menu())
            open->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QStringList captions() const
    {
        QStringList texts;
        for (const QAction* entry : menu()->actions())
            texts << (entry->isSeparator() ? u"-"_s : entry->text());
        return texts;
    }
    void press(int key, Qt::KeyboardModifiers modifiers)
    {
        sendKey(key, modifiers);
        QCoreApplication::processEvents();
    }
    void openMenu() { press(Qt::Key_F10, Qt::ControlModifier | Qt::ShiftModifier); }
    void sendMenuKey(Qt::KeyboardModifiers modifiers) const
    {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {}, modifiers);
        QCoreApplication::sendEvent(m_list, &event);
    }
    QStringList names() const
    {
        QStringList found;
        for (int row = 0; row < m_list->rows().rowCount(); ++row)
            found << m_list->rows().text(row, 0).toString();
        return found;
    }
    void refill(const QStringList& names)
    {
        m_list->rows().clear();
        fill(*m_list, names);
    }
    int widthOf(const QString& text) const { return QFontMetrics(m_list->font()).horizontalAdvance(text); }
};

void TestSortMenu::everyColumnHasItsEntry()
{
    openMenu();
    QVERIFY(menu() != nullptr);
    QCOMPARE(captions(), QStringList({u"「名称」で並べ替え"_s, u"「種別」で並べ替え"_s,
                                      u"「ＩＤ」で並べ替え"_s, u"-"_s, u"列の幅を内容に合わせる"_s}));
    for (const QAction* entry : menu()->actions())
        QVERIFY(entry->isEnabled() && !entry->isChecked());
    QCOMPARE(menu()->actions().last()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Plus));
}

void TestSortMenu::hiddenColumnsHaveNone()
{
    m_list->setColumnHidden(1, true);
    openMenu();
    QCOMPARE(captions().mid(0, 3), QStringList({u"「名称」で並べ替え"_s, u"「ＩＤ」で並べ替え"_s, u"-"_s}));
}

void TestSortMenu::equalHeadersAreToldApart()
{
    ReportList list(
        m_reporting,
        {{.header = u"元"_s}, {.header = u"種別"_s}, {.header = u"R&D"_s}, {.header = u"種別"_s}});
    list.show();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {}, Qt::NoModifier);
    QCoreApplication::sendEvent(&list, &event);
    const auto* open = list.findChild<QMenu*>(u"sortMenu"_s);
    if (open == nullptr)
        QFAIL("no menu");
    QVERIFY(compareText(open->actions().at(0)->text(), u"「元」で並べ替え"));
    QVERIFY(compareText(open->actions().at(1)->text(), u"「種別」(2 列目) で並べ替え"));
    QVERIFY(compareText(open->actions().at(2)->text(), u"「R&&D」で並べ替え"));
    QVERIFY(compareText(open->actions().at(3)->text(), u"「種別」(4 列目) で並べ替え"));
}

void TestSortMenu::anEntrySortsAsAClickOnTheHeaderDoes()
{
    QSignalSpy clicked(m_list, &ReportList::columnClicked);
    openMenu();
    menu()->actions().at(0)->trigger();
    const QStringList byMenu = names();
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(clicked.at(0).at(0).toInt(), 0);
    QCOMPARE(m_list->sortedColumn(), 0);
    QCOMPARE(m_list->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
    refill({u"りんご"_s, u"apple"_s, u"Banana"_s, u"avocado"_s, u"水"_s});
    const QHeaderView* header = m_list->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(0) + 20, header->height() / 2));
    QVERIFY(byMenu.first() != u"りんご"_s);
    QCOMPARE(names(), byMenu);
}

void TestSortMenu::theColumnOfTheSortingIsMarked()
{
    openMenu();
    menu()->actions().at(2)->trigger();
    closeMenu();
    openMenu();
    QCOMPARE(captions().mid(0, 3),
             QStringList({u"「名称」で並べ替え"_s, u"「種別」で並べ替え"_s, u"「ＩＤ」で並べ替え (昇順)"_s}));
    QVERIFY(menu()->actions().at(2)->isChecked());
    QVERIFY(!menu()->actions().at(0)->isChecked());
    closeMenu();
    m_list->rows().clear(); // which ends the sorting
    openMenu();
    QVERIFY(!menu()->actions().at(2)->isChecked());
    QVERIFY(compareText(menu()->actions().at(2)->text(), u"「ＩＤ」で並べ替え"));
}

void TestSortMenu::keysOpenTheMenu_data()
{
    QTest::addColumn<bool>("hasItsOwnMenu");
    QTest::addColumn<bool>("menuKey");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<bool>("sorts");
    const Qt::KeyboardModifiers none = Qt::NoModifier;
    const Qt::KeyboardModifiers shift = Qt::ShiftModifier;
    const Qt::KeyboardModifiers control = Qt::ControlModifier;
    QTest::newRow("menu key") << false << true << none << true;
    QTest::newRow("Shift and F10") << false << false << shift << true;
    QTest::newRow("Ctrl and menu key") << false << true << control << true;
    QTest::newRow("Ctrl, Shift and F10") << false << false << (control | shift) << true;
    QTest::newRow("menu key, where there is a menu") << true << true << none << false;
    QTest::newRow("Shift and F10, where there is a menu") << true << false << shift << false;
    QTest::newRow("Ctrl and menu key, where there is a menu") << true << true << control << true;
    QTest::newRow("Ctrl, Shift and F10, where there is a menu") << true << false << (control | shift) << true;
}

void TestSortMenu::keysOpenTheMenu()
{
    QFETCH(const bool, hasItsOwnMenu);
    QFETCH(const bool, menuKey);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    QFETCH(const bool, sorts);
    QList<QPoint> asked;
    if (hasItsOwnMenu)
        connect(m_list, &ReportList::menuRequested, this, [&](const QPoint& position) { asked << position; });
    click(1);
    if (menuKey)
        sendMenuKey(modifiers);
    else
        press(Qt::Key_F10, modifiers);
    QCOMPARE(menu() != nullptr, sorts);
    QCOMPARE(asked.size(), sorts ? 0 : 1);
    const QPoint place = sorts ? menu()->pos() : asked.first();
    QVERIFY(m_list->visualRect(m_list->rows().index(1, 0))
                .adjusted(0, 0, 0, 2)
                .contains(m_list->viewport()->mapFromGlobal(place)));
    QVERIFY(m_window->keys.isEmpty());
}

void TestSortMenu::aHeldKeyOpensOneMenu()
{
    int asked = 0;
    connect(m_list, &ReportList::menuRequested, this, [&] { ++asked; });
    QKeyEvent repetition(QEvent::KeyPress, Qt::Key_F10, Qt::ShiftModifier, QString(), true);
    press(Qt::Key_F10, Qt::ShiftModifier);
    QCoreApplication::sendEvent(m_list, &repetition);
    QCOMPARE(asked, 1);
    QVERIFY(m_window->keys.isEmpty());
}

void TestSortMenu::theHeadersOwnMenuSorts()
{
    QSignalSpy asked(m_list, &ReportList::menuRequested);
    QWidget* header = m_list->horizontalHeader()->viewport();
    const QPoint place(30, header->height() / 2);
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, header->mapToGlobal(place));
    QCoreApplication::sendEvent(header, &event);
    QVERIFY(menu() != nullptr);
    QCOMPARE(menu()->pos(), header->mapToGlobal(place));
    QCOMPARE(asked.size(), 0);
    menu()->actions().at(0)->trigger();
    QCOMPARE(m_list->sortedColumn(), 0);
}

void TestSortMenu::theHeaderTellsTheKeys()
{
    QWidget* header = m_list->horizontalHeader()->viewport();
    const QPoint place(30, header->height() / 2);
    QHelpEvent resting(QEvent::ToolTip, place, header->mapToGlobal(place));
    QCoreApplication::sendEvent(header, &resting);
    QVERIFY(compareText(QToolTip::text(), u"クリックするか、Ctrl + Shift + F10 で並べ替えます。"));
    QToolTip::hideText();
}

void TestSortMenu::theRightMouseButtonOpensNoneOnTheRows()
{
    const QPoint place = at(1);
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, m_list->viewport()->mapToGlobal(place));
    QCoreApplication::sendEvent(m_list->viewport(), &event);
    QVERIFY(menu() == nullptr);
}

void TestSortMenu::columnsAreFittedToTheirTexts_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("on the number pad") << (Qt::ControlModifier | Qt::KeypadModifier);
    QTest::newRow("with Shift") << (Qt::ControlModifier | Qt::ShiftModifier);
    QTest::newRow("without") << Qt::KeyboardModifiers(Qt::ControlModifier);
}

void TestSortMenu::columnsAreFittedToTheirTexts()
{
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    const QString name = u"とても長い名称のデータ"_s.repeated(4);
    refill({u"短"_s, name});
    m_list->setColumnWidth(0, 20);
    m_list->setColumnWidth(1, 500);
    press(Qt::Key_Plus, modifiers);
    const int margins = m_list->columnWidth(0) - widthOf(name);
    QVERIFY2(margins >= 0 && margins < 20, qPrintable(QString::number(margins)));
    QVERIFY(m_list->columnWidth(1) < 500);
    QVERIFY(m_list->columnWidth(1) >= widthOf(u"定義"_s));
    QVERIFY(m_window->keys.isEmpty());
}

void TestSortMenu::columnsAreFittedFromTheMenu()
{
    m_list->setColumnWidth(1, 500);
    openMenu();
    menu()->actions().last()->trigger();
    QVERIFY(m_list->columnWidth(1) < 500);
}

void TestSortMenu::fittedNamesAreWholeAndGetTheRoomThatIsLeft()
{
    const QString name = u"とても長い名称のデータ"_s.repeated(6);
    refill({u"短"_s, name});
    m_list->giveRoomTo({0});
    QVERIFY(m_list->columnWidth(0) < widthOf(name));
    m_list->fitColumns();
    QVERIFY(m_list->columnWidth(0) >= widthOf(name));
    m_window->resize(2000, 400);
    QCoreApplication::processEvents();
    QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
    m_window->resize(600, 400);
    QCoreApplication::processEvents();
    QVERIFY(m_list->columnWidth(0) >= widthOf(name));
    refill({u"短"_s}); // other data, which fill the list as ever
    QCoreApplication::processEvents();
    QCOMPARE(m_list->horizontalHeader()->length(), m_list->viewport()->width());
}

void TestSortMenu::theWidestOfManyRowsCounts()
{
    const QString name = u"一番長い名称"_s.repeated(5);
    QStringList many;
    for (int row = 0; row < 5000; ++row)
        many << (row == 4321 ? name : u"項目%1"_s.arg(row));
    refill(many);
    m_list->fitColumns();
    QVERIFY(m_list->columnWidth(0) >= widthOf(name));
}

void TestSortMenu::headersAreNeverCutOff()
{
    m_list->rows().clear();
    m_list->fitColumns();
    for (int column = 0; column < 3; ++column)
        QVERIFY(m_list->columnWidth(column) >= m_list->horizontalHeader()->sectionSizeHint(column));
}

void TestSortMenu::aPlusThatIsTypedIsSearched()
{
    refill({u"加"_s, u"+足す"_s});
    const int width = m_list->columnWidth(0);
    QTest::keyClick(m_list, '+');
    QCOMPARE(selectedNames(*m_list), QStringList(u"+足す"_s));
    QCOMPARE(m_list->columnWidth(0), width);
}

QTEST_MAIN(TestSortMenu)
#include "test_sort_menu.moc"
