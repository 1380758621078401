#include "core/data_selection.h"
#include "store/filter_result.h"
#include "store/record_set.h"
#include "tests/support/drag.h"
#include "tests/support/failure_box.h"
#include "tests/support/held_key.h"
#include "tests/support/troubled_database.h"
#include "tests/support/window_probe.h"
#include "tests/support/window_world.h"
#include "ui/auxiliary/frmDataSelect.h"
#include "ui/data/frmMainData.h"
#include "ui/widgets/status_panels.h"

#include <QPointer>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox NothingSelected{.text = u"データが選択されていません。"_s,
                                 .title = u"Quillon システム運用部"_s};

MessageBox question(const QString& name)
{
    return {.text = u"<"_s + name + u"> を削除しますか。"_s, .buttons = Buttons::OkCancel};
}

} // namespace

/// The data selection window in display mode.
class TestDataSelectionWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<WindowWorld> world;
    QPointer<frmDataSelect> form;

    /// Lists a record set for showing its data.
    void fill(const std::shared_ptr<RecordSet>& recordSet, ListFill how = ListFill::Replace)
    {
        QCOMPARE(CreateDataList(world->session(), recordSet, SelectionUse::Show, how), qint16(0));
        WindowWorld::processEvents();
        form = world->window<frmDataSelect>(u"frmDataSelect"_s);
        QVERIFY(!form.isNull());
    }
    void fillDefinitions() { fill(world->session().RsMain); }
    ReportList& list() const { return *form->findChild<ReportList*>(u"lsvData"_s); }
    QStringList rows() const { return rowsOf(list().rows()); }
    QString panel(int number) const { return form->findChild<StatusPanels*>(u"sbStatus"_s)->text(number); }
    void press(const QString& name) const { form->findChild<QPushButton*>(name)->click(); }

    /// Acts on the selected row in one of the ways that a person has.
    void act(const QString& way) const
    {
        if (way == u"Enter"_s)
            QTest::keyClick(&list(), Qt::Key_Return);
        else if (way == u"Delete"_s)
            QTest::keyClick(&list(), Qt::Key_Delete);
        else if (way == u"double click"_s)
            doubleClickRow(list(), 1);
        else if (way.startsWith(u"cmd"_s))
            press(way);
        else
            QVERIFY(WindowWorld::choose(*form, way));
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        world->open(world->createDatabase());
        Session& session = world->session();
        world->addRow(session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        world->addRow(session.RsMain, {u"あめ"_s, u"M-991231-002"_s, u"天気"_s});
        world->addRow(session.RsMain, {u"イス"_s, u"M-991231-003"_s, u"家具"_s});
        world->addRow(session.RsRefDoc, {u"本"_s, u"R-991231-001"_s, u"内容"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void newWindowHasItsDesignTexts()
    {
        fillDefinitions();
        QCOMPARE(form->windowTitle(), u"データ選択画面"_s);
        QCOMPARE(headersOf(list().rows()), QStringList({u"名称"_s, u"種別"_s, u"ＩＤ"_s, u"下位分類"_s}));
        QCOMPARE(list().accessibleName(), u"データ一覧"_s);
        QCOMPARE(form->findChild<QPushButton*>(u"cmdOK"_s)->text(), u"OK"_s);
        QCOMPARE(form->findChild<QPushButton*>(u"cmdCancel"_s)->text(), u"Cancel"_s);
        QCOMPARE(menuBarOf(*form->menuBar()), QStringList({u"データ(&D)"_s}));
        QCOMPARE(entriesOf(*form->findChild<QMenu*>(u"mnuOpe"_s)),
                 QStringList({u"mnuView 表示(&V)"_s, u"mnuDelete 削除(&F)"_s, u"mnuClose 閉じる(&C)"_s}));
        QStringList toolTips;
        for (const QLabel* label : form->findChild<StatusPanels*>(u"sbStatus"_s)->findChildren<QLabel*>())
            toolTips << label->toolTip();
        QCOMPARE(toolTips, QStringList({u"現在の情報選択画面のモードを表示します。"_s, QString(),
                                        u"表示されている情報数を表示します。"_s}));
    }

    void tabGoesThroughTheWindowAsTheEyeDoes()
    {
        fillDefinitions();
        QCOMPARE(form->focusWidget(), &list());
        QCOMPARE(tabRound(*form), QStringList({u"lsvData"_s, u"cmdOK"_s, u"cmdCancel"_s}));
    }

    void dataAreListedInTheirOrder()
    {
        fillDefinitions();
        QCOMPARE(rows(), QStringList({u"水|定義|M-991231-001|"_s, u"あめ|定義|M-991231-002|"_s,
                                      u"イス|定義|M-991231-003|"_s}));
        QVERIFY(form->isVisible());
        QVERIFY(!form->isModal());
        QCOMPARE(panel(1), u"表示モード"_s);
        QCOMPARE(panel(2), QString());
        QCOMPARE(panel(3), u"表示データ数：3"_s);
    }

    void nextFillReplacesTheRowsOfTheSameWindow()
    {
        fillDefinitions();
        const frmDataSelect* before = form;
        clickHeader(list(), 0);
        fill(world->session().RsRefDoc);
        QCOMPARE(form.data(), before);
        QCOMPARE(world->windowCount(u"frmDataSelect"_s), 1);
        QCOMPARE(rows(), QStringList({u"本|文献|R-991231-001|"_s}));
        QCOMPARE(panel(3), u"表示データ数：1"_s);
    }

    void appendingLeavesTheCountOfTheLastSetOnly()
    {
        fillDefinitions();
        fill(world->session().RsRefDoc, ListFill::Append);
        QCOMPARE(rows().size(), 4);
        QCOMPARE(rows().last(), u"本|文献|R-991231-001|"_s);
        QCOMPARE(panel(3), u"表示データ数：1"_s);
    }

    void filteredSetIsListed()
    {
        fill(GetFilterResult(world->session().reporting, world->session().RsMain,
                             u"Explanation Like '*天*'"_s));
        QCOMPARE(rows(), QStringList({u"あめ|定義|M-991231-002|"_s}));
        QCOMPARE(panel(3), u"表示データ数：1"_s);
    }

    void emptySetListsNothingAndCountsZero()
    {
        fillDefinitions();
        fill(world->session().RsRefFile);
        QCOMPARE(rows(), QStringList());
        QCOMPARE(panel(3), u"表示データ数：0"_s);
    }

    void missingSetIsReportedAndTheAnswerIsZero()
    {
        world->dialogs.expect(failureBox(u"CreateDataList"_s, 91));
        QCOMPARE(CreateDataList(world->session(), nullptr, SelectionUse::Show, ListFill::Replace), qint16(0));
    }

    void selectedDatumIsShown_data()
    {
        QTest::addColumn<QString>("way");
        for (const char* way : {"cmdOK", "mnuView", "double click", "Enter"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }

    void selectedDatumIsShown()
    {
        QFETCH(QString, way);
        world->session().LinkSourceMode = true; // pending from a data window; showing ends it
        world->session().LinkSourceID = u"R-991231-001"_s;
        fillDefinitions();
        QVERIFY(!world->session().LinkSourceMode);
        selectRow(list(), 1);
        act(way);
        WindowWorld::processEvents();
        const auto* shown = world->window<frmMainData>(u"frmMainData"_s);
        QVERIFY(shown != nullptr);
        QCOMPARE(shown->windowTitle(), u"定義画面 - あめ"_s);
        QVERIFY(form->isVisible());
        QCOMPARE(world->rowsOf(world->session().RsLink), QStringList());
        QCOMPARE(world->session().LinkSourceID, u"R-991231-001"_s); // stays for the console
    }

    void nothingSelectedIsTold_data()
    {
        QTest::addColumn<QString>("way");
        for (const char* way : {"cmdOK", "mnuView", "Enter", "mnuDelete", "Delete"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }

    void nothingSelectedIsTold()
    {
        QFETCH(QString, way);
        fillDefinitions();
        world->dialogs.expect(NothingSelected);
        act(way);
        QCOMPARE(rows().size(), 3);
        fill(world->session().RsRefFile); // an empty list
        world->dialogs.expect(NothingSelected);
        act(way);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 0);
    }

    void doubleClickBesideTheRowsDoesNothing()
    {
        fillDefinitions();
        doubleClickBesideRows(list());
        QCOMPARE(world->windowCount(u"frmMainData"_s), 0);
    }

    void datumThatIsGoneIsToldByShowing()
    {
        fillDefinitions();
        world->session().RsMain->moveFirst();
        world->session().RsMain->deleteRow();
        selectRow(list(), 0);
        world->dialogs.expect(MessageBox{.text = u"指定されたデータが見つかりませんでした。"_s,
                                         .title = u"定義"_s,
                                         .icon = Icon::Information});
        act(u"cmdOK"_s);
        QCOMPARE(rows().size(), 3); // what the list showed when it was filled
    }

    void deletionAsksAndCounts_data()
    {
        QTest::addColumn<QString>("way");
        for (const char* way : {"mnuDelete", "Delete"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }

    void deletionAsksAndCounts()
    {
        QFETCH(QString, way);
        world->addRow(world->session().RsLink, {u"M-991231-002"_s, u"R-991231-001"_s});
        fillDefinitions();
        selectRow(list(), 1);
        world->dialogs.expect(question(u"あめ"_s), Answer::Cancel);
        act(way);
        QCOMPARE(rows().size(), 3);
        QCOMPARE(panel(3), u"表示データ数：3"_s);
        world->dialogs.expect(question(u"あめ"_s)); // and no notice afterwards
        act(way);
        QCOMPARE(rows(), QStringList({u"水|定義|M-991231-001|"_s, u"イス|定義|M-991231-003|"_s}));
        QCOMPARE(panel(3), u"表示データ数：2"_s);
        QCOMPARE(world->rowsOf(world->session().RsMain).size(), 2);
        QCOMPARE(world->rowsOf(world->session().RsLink), QStringList());
    }

    void deletingTheLastRowCountsZero()
    {
        fill(world->session().RsRefDoc);
        selectRow(list(), 0);
        world->dialogs.expect(question(u"本"_s));
        act(u"Delete"_s);
        QCOMPARE(rows(), QStringList());
        QCOMPARE(panel(3), u"表示データ数：0"_s);
    }

    void deletionCountsTheWholeList()
    {
        fillDefinitions();
        fill(world->session().RsRefDoc, ListFill::Append); // the panel counts one
        selectRow(list(), 3);
        world->dialogs.expect(question(u"本"_s));
        act(u"Delete"_s);
        QCOMPARE(panel(3), u"表示データ数：3"_s);
    }

    void failedDeletionKeepsRowAndCount()
    {
        fillDefinitions();
        refuseDeletion(*world->session().OpenDb, u"Main"_s, u"1"_s);
        selectRow(list(), 0);
        world->dialogs.expect(question(u"水"_s));
        world->dialogs.expect(failureBox(u"DeleteData"_s, errors::InvalidArgument));
        act(u"Delete"_s);
        QCOMPARE(rows().size(), 3);
        QCOMPARE(panel(3), u"表示データ数：3"_s);
    }

    void datumThatTurnsOutToBeGoneLeavesTheList()
    {
        fillDefinitions();
        world->session().RsMain->moveFirst();
        world->session().RsMain->deleteRow();
        selectRow(list(), 0);
        world->dialogs.expect(question(u"不明"_s));
        world->dialogs.expect(MessageBox{.text = u"指定されたデータが見つかりませんでした。"_s,
                                         .title = u"Quillon データ調査分析部"_s});
        act(u"Delete"_s);
        QCOMPARE(rows().size(), 2);
        QCOMPARE(panel(3), u"表示データ数：2"_s);
    }

    void windowClosesWithoutAsking_data()
    {
        QTest::addColumn<QString>("way");
        for (const char* way : {"cmdCancel", "mnuClose", "Esc", "close box"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }

    void windowClosesWithoutAsking()
    {
        QFETCH(QString, way);
        fillDefinitions();
        if (way == u"Esc"_s)
            QTest::keyClick(&list(), Qt::Key_Escape);
        else if (way == u"close box"_s)
            form->close();
        else
            act(way);
        WindowWorld::processEvents();
        QVERIFY(form.isNull());
        QCOMPARE(world->windowCount(u"frmDataSelect"_s), 0);
    }

    void keyThatWasPressedElsewhereDoesNothing()
    {
        fillDefinitions();
        selectRow(list(), 0);
        QTest::keyRelease(&list(), Qt::Key_Escape); // it has just closed a box
        QTest::keyRelease(&list(), Qt::Key_Delete);
        QTest::keyRelease(&list(), Qt::Key_Return);
        WindowWorld::processEvents();
        QVERIFY(!form.isNull());
        QCOMPARE(rows().size(), 3);
    }

    void keyHeldDownActsOnceAndWhenItIsReleased()
    {
        fillDefinitions();
        selectRow(list(), 0);
        world->calls.take();
        QTest::keyPress(&list(), Qt::Key_Return);
        for (int time = 0; time < 3; ++time)
            repeatKey(list(), Qt::Key_Return);
        WindowWorld::processEvents();
        QCOMPARE(world->windowCount(u"frmMainData"_s), 0);
        QTest::keyRelease(&list(), Qt::Key_Return);
        WindowWorld::processEvents();
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
    }

    void headersSortInJapaneseOrder_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("name") << 0 << QStringList({u"あめ"_s, u"イス"_s, u"水"_s, u"本"_s});
        QTest::newRow("kind") << 1 << QStringList({u"水"_s, u"あめ"_s, u"イス"_s, u"本"_s});
        QTest::newRow("identifier") << 2 << QStringList({u"水"_s, u"あめ"_s, u"イス"_s, u"本"_s});
        QTest::newRow("empty column") << 3 << QStringList({u"本"_s, u"水"_s, u"あめ"_s, u"イス"_s});
    }

    void headersSortInJapaneseOrder()
    {
        QFETCH(int, column);
        QFETCH(QStringList, names);
        fill(world->session().RsRefDoc);
        fill(world->session().RsMain, ListFill::Append);
        const auto shownNames = [this] {
            QStringList shown;
            for (const QString& row : rows())
                shown << row.section(u'|', 0, 0);
            return shown;
        };
        clickHeader(list(), column);
        QCOMPARE(shownNames(), names);
        clickHeader(list(), column); // does not turn the order round
        QCOMPARE(shownNames(), names);
    }

    void actionsFollowTheRowOnTheScreen()
    {
        fillDefinitions();
        clickHeader(list(), 0);
        selectRow(list(), 0);
        world->dialogs.expect(question(u"あめ"_s));
        act(u"Delete"_s);
        QCOMPARE(rows(), QStringList({u"イス|定義|M-991231-003|"_s, u"水|定義|M-991231-001|"_s}));
    }

    void draggedRowCarriesItsIdentifier()
    {
        fillDefinitions();
        QVERIFY(list().dragEnabled());
        const std::unique_ptr<QMimeData> data(list().rows().mimeData({list().rows().index(2, 0)}));
        QVERIFY(data->hasText());
        QCOMPARE(data->text(), u"M-991231-003"_s);

        // Dropped on the link list of a data window it is linked.
        selectRow(list(), 0);
        act(u"cmdOK"_s);
        WindowWorld::processEvents();
        auto* water = world->window<frmMainData>(u"frmMainData"_s);
        world->dialogs.expect(
            MessageBox{.text = u"<水> と<イス> をリンクしますか。"_s, .buttons = Buttons::OkCancel});
        QVERIFY(drop(*water->findChild<ReportList*>(u"lsvLink"_s)->viewport(), data->text()));
        QCOMPARE(world->rowsOf(world->session().RsLink), QStringList({u"M-991231-001|M-991231-003"_s}));
    }
};

QTEST_MAIN(TestDataSelectionWindow)
#include "test_data_selection_window.moc"
