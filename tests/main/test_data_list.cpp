// The data list: what each node lists, sorting, opening a row.
#include "core/data_records.h"
#include "store/record_set.h"
#include "store/session.h"
#include "tests/support/compare_text.h"
#include "tests/support/window_world.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QHeaderView>
#include <QMimeData>
#include <QProgressBar>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestDataList : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowWorld> world;
    frmMainMenu* window = nullptr;
    KeyedTree* tree = nullptr;
    ReportList* list = nullptr;

    QStringList rows() const
    {
        QStringList lines;
        for (int row = 0; row < list->rows().rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < 4; ++column)
                cells << list->rows().text(row, column).toString();
            lines << cells.join(u'|');
        }
        return lines;
    }
    QString count() const { return WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(2); }
    void choose(const QString& key)
    {
        const int node = tree->nodes().position(key);
        tree->select(node);
        window->tvwCategory_NodeClick(node);
    }
    void clickHeader(int column)
    {
        auto* header = list->horizontalHeader();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionViewportPosition(column) + 12, header->height() / 2));
    }
    Session& session() { return world->session(); }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        window = &world->mainWindow();
        tree = WindowWorld::control<KeyedTree>(*window, u"tvwCategory"_s);
        list = WindowWorld::control<ReportList>(*window, u"lsvData"_s);
        const QString path = world->createDatabase();
        world->open(path);
        WindowWorld::addRow(session().RsMain, {u"水"_s, u"M-991231-001"_s, u"H2O"_s});
        WindowWorld::addRow(session().RsMain, {u"火"_s, u"M-991231-002"_s, u"未定義"_s});
        WindowWorld::addRow(session().RsMain, {u"土"_s, u"M-991231-003"_s, u"未定義。"_s});
        WindowWorld::addRow(session().RsRefDoc, {u"論文"_s, u"R-991231-001"_s, u"本文"_s});
        WindowWorld::addRow(session().RsRefFile, {u"図.png"_s, u"F-991231-001"_s, u"未入力"_s});
        WindowWorld::addRow(session().RsCategoryID, {u"A"_s, u"甲"_s});
        WindowWorld::addRow(session().RsCategoryID, {u"A-A"_s, u"甲の一"_s});
        WindowWorld::addRow(session().RsCategoryID, {u"A-B"_s, u"甲の二"_s});
        WindowWorld::addRow(session().RsCategoryID, {u"a"_s, u"小"_s});
        world->open(path);
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void headersStandAsWritten()
    {
        QStringList headers;
        for (int column = 0; column < list->rows().columnCount(); ++column)
            headers << list->rows().headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        QCOMPARE(headers, QStringList({u"名称"_s, u"種別"_s, u"ＩＤ"_s, u"下位分類"_s}));
    }

    void openingListsAllDataDefinitionsFirst()
    {
        QCOMPARE(rows(), QStringList({u"水|定義|M-991231-001|"_s, u"火|定義|M-991231-002|"_s,
                                      u"土|定義|M-991231-003|"_s, u"論文|文献|R-991231-001|"_s,
                                      u"図.png|FILE|F-991231-001|"_s}));
        QVERIFY(compareText(count(), u"表示データ数 ： 5"));
        QVERIFY(WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s)->isHidden());
    }

    void kindNodesListTheirKind()
    {
        choose(u"M_DIV"_s);
        QCOMPARE(rows().size(), 3);
        choose(u"R_DIV"_s);
        QCOMPARE(rows(), QStringList({u"論文|文献|R-991231-001|"_s}));
        choose(u"F_DIV"_s);
        QCOMPARE(rows(), QStringList({u"図.png|FILE|F-991231-001|"_s}));
        QVERIFY(compareText(count(), u"表示データ数 ： 1"));
        choose(u"DIV"_s);
        QCOMPARE(rows().size(), 5);
    }

    void clickListsTheNodeThatItTells()
    {
        window->tvwCategory_NodeClick(tree->nodes().position(u"R_DIV"_s));
        QCOMPARE(rows(), QStringList({u"論文|文献|R-991231-001|"_s}));
        QVERIFY(compareText(count(), u"表示データ数 ： 1"));
        window->tvwCategory_NodeClick(0); // no node
        QCOMPARE(rows(), QStringList());
    }

    void withoutMembershipsEverythingIsUncategorised()
    {
        choose(u"M_DIV_NOCATEGORY"_s);
        QCOMPARE(rows().size(), 3);
        choose(u"R_DIV_NOCATEGORY"_s);
        QCOMPARE(rows(), QStringList({u"論文|文献|R-991231-001|"_s}));
        choose(u"F_DIV_NOCATEGORY"_s);
        QCOMPARE(rows(), QStringList({u"図.png|FILE|F-991231-001|"_s}));
    }

    void categorisedDataAreLeftOutOfTheUncategorised()
    {
        WindowWorld::addRow(session().RsCategory, {u"A-A"_s, u"M-991231-002"_s});
        WindowWorld::addRow(session().RsCategory, {u"A"_s, u"F-991231-001"_s});
        choose(u"M_DIV_NOCATEGORY"_s);
        QCOMPARE(rows(), QStringList({u"水|定義|M-991231-001|"_s, u"土|定義|M-991231-003|"_s}));
        choose(u"F_DIV_NOCATEGORY"_s);
        QCOMPARE(rows(), QStringList());
        QVERIFY(compareText(count(), u"表示データ数 ： 0"));
    }

    void uncategorisedMatchesOneSearchPerDatum()
    {
        // The set-wise answer against the plain one, on random memberships, nulls and unknown data included.
        QRandomGenerator random(20260101);
        const QString path = world->createDatabase(u"random.mdb"_s);
        {
            const auto database = Database::open(path);
            auto& connection = database->connection();
            // Usual identifiers, close together and far apart, and unusual ones.
            const auto identifier = [](int i) {
                return i % 3 == 0   ? u"M-%1"_s.arg(i)
                       : i % 3 == 1 ? u"M-991231-%1"_s.arg(i, 3, 10, QChar(u'0'))
                                    : u"M-%1-001"_s.arg(100'000 + 1999 * i);
            };
            for (int i = 0; i < 300; ++i)
                connection.execute(u"INSERT INTO Main VALUES ('n%1', '%2', '')"_s.arg(i).arg(identifier(i)));
            connection.execute(u"INSERT INTO Main VALUES ('null', NULL, '')"_s);
            connection.execute(u"INSERT INTO Category VALUES ('Z', NULL)"_s);
            for (int i = 0; i < 200; ++i)
                connection.execute(u"INSERT OR IGNORE INTO Category VALUES ('A', '%1')"_s.arg(
                    identifier(random.bounded(400))));
        }
        world->open(path);
        QStringList expected;
        session().RsMain->moveFirst();
        while (!session().RsMain->endOfFile()) {
            const QString identifier = session().RsMain->field(1);
            session().RsCategory->findFirst(u"Object_ID = '"_s + identifier + u"'"_s);
            const bool found =
                session().RsCategory->hasCurrentRow() && session().RsCategory->field(1) == identifier;
            if (!found)
                expected << session().RsMain->field(0) + u"|定義|"_s + identifier + u'|';
            session().RsMain->moveNext();
        }
        QVERIFY(expected.size() > 100);
        choose(u"M_DIV_NOCATEGORY"_s);
        QCOMPARE(rows(), expected);
    }

    void undefinedDataMatchExactly()
    {
        choose(u"M_DIV_NODIF"_s);
        QCOMPARE(rows(), QStringList({u"火|定義|M-991231-002|"_s}));
        QVERIFY(compareText(count(), u"表示データ数 ： 1"));
    }

    void categoryListsItsMembersAndThoseBelow()
    {
        WindowWorld::addRow(session().RsCategory, {u"A-A"_s, u"R-991231-001"_s});
        WindowWorld::addRow(session().RsCategory, {u"A"_s, u"M-991231-001"_s});
        WindowWorld::addRow(session().RsCategory, {u"A-B"_s, u"R-991231-001"_s});
        WindowWorld::addRow(session().RsCategory, {u"a"_s, u"M-991231-003"_s}); // no relative of "A"
        choose(u"A"_s);
        QCOMPARE(rows(), QStringList({u"水|定義|M-991231-001|NO"_s, u"論文|文献|R-991231-001|YES"_s,
                                      u"論文|文献|R-991231-001|YES"_s}));
        QVERIFY(compareText(count(), u"表示データ数 ： 3"));
        choose(u"A-B"_s);
        QCOMPARE(rows(), QStringList({u"論文|文献|R-991231-001|NO"_s}));
        choose(u"a"_s);
        QCOMPARE(rows(), QStringList({u"土|定義|M-991231-003|NO"_s}));
    }

    void categoryRootListsNothing()
    {
        choose(u"CATEGORY"_s);
        QCOMPARE(rows(), QStringList());
        QVERIFY(compareText(count(), u"表示データ数 ： 0"));
    }

    void membershipOfAMissingDatumIsListedAsUnknown()
    {
        WindowWorld::addRow(session().RsCategory, {u"A"_s, u"M-991231-999"_s});
        WindowWorld::addRow(session().RsCategory, {u"A"_s, u"X-1"_s});
        choose(u"A"_s);
        QCOMPARE(rows(), QStringList({u"不明|定義|M-991231-999|NO"_s, u"不明|不明|X-1|NO"_s}));
    }

    void nullsInEveryFieldAreListedEmpty()
    {
        session().OpenDb->connection().execute(u"INSERT INTO Main VALUES (NULL, NULL, NULL)"_s);
        choose(u"M_DIV"_s);
        QCOMPARE(rows().size(), 4);
        QVERIFY(compareText(rows().last(), u"|不明||"));
    }

    void strangeNamesAreListedAsTheyStand()
    {
        const QStringList names = {u"<b>水</b>"_s, u"一\r\n二"_s, u"ｶﾞｷﾞｸﾞ"_s, u"한글\U0001F600"_s,
                                   u"&lt;"_s};
        for (int i = 0; i < names.size(); ++i)
            WindowWorld::addRow(session().RsRefFile, {names[i], u"F-991231-01%1"_s.arg(i), u"未入力"_s});
        choose(u"F_DIV"_s);
        for (int i = 0; i < names.size(); ++i)
            QVERIFY(compareText(list->rows().text(i + 1, 0), names[i]));
    }

    void headerSortsInJapaneseOrderAndDoesNotToggle()
    {
        for (const QString& name : {u"いろは"_s, u"アイウ"_s, u"ａｂｃ"_s, u"あいう"_s, u"ABC"_s})
            WindowWorld::addRow(
                session().RsRefDoc,
                {name, u"R-000101-%1"_s.arg(session().RsRefDoc->recordCount(), 3, 10, QChar(u'0')), {}});
        choose(u"R_DIV"_s);
        clickHeader(0);
        QStringList names;
        for (const QString& row : rows())
            names << row.section(u'|', 0, 0);
        QCOMPARE(names,
                 QStringList({u"ａｂｃ"_s, u"ABC"_s, u"アイウ"_s, u"あいう"_s, u"いろは"_s, u"論文"_s}));
        clickHeader(0);
        QVERIFY(compareText(list->rows().text(0, 0), u"ａｂｃ")); // a second click changes nothing
        clickHeader(2);
        QVERIFY(compareText(list->rows().text(0, 2), u"R-000101-001"));
    }

    void sortingLastsUntilTheNextFill()
    {
        clickHeader(0);
        QVERIFY(rows()[1] != u"火|定義|M-991231-002|"_s);
        choose(u"DIV"_s);
        QVERIFY(compareText(rows().first(), u"水|定義|M-991231-001|"));
        QVERIFY(compareText(rows()[1], u"火|定義|M-991231-002|"));
    }

    void damagedRecordSetIsReportedUnderTheListsName()
    {
        session().OpenDb->connection().execute(u"DROP TABLE RefDoc"_s);
        world->dialogs.expect(MessageBox{
            .text = u"対処不能なエラーが発生しました。\r\nLOCATION : CreateDataListMain\r\nEXPLANATION : "_s +
                    standardDescription(errors::TableNotFound),
            .title = u"Quillon 障害対策部"_s});
        choose(u"R_DIV"_s);
        QVERIFY(world->eventLog.lines.last().contains(u", ErrorNumber : 3078, "_s));
    }

    void doubleClickOpensTheDefinition()
    {
        const QModelIndex second = list->model()->index(1, 0);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(second).center());
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(second).center());
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        auto* data = world->window<FormWindow>(u"frmMainData"_s);
        QVERIFY(compareText(data->windowTitle(), u"定義画面 - 火"));
        // The same datum again brings the same window to the front, another one opens a second window.
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(second).center());
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        list->selectRow(0);
        QVERIFY(WindowWorld::choose(*window, u"mnuDataView"_s));
        QCOMPARE(world->windowCount(u"frmMainData"_s), 2);
    }

    void enterOpensTheDefinition()
    {
        list->selectRow(2);
        list->setCurrentIndex(list->model()->index(2, 0));
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        QVERIFY(compareText(world->window<FormWindow>(u"frmMainData"_s)->windowTitle(), u"定義画面 - 土"));
    }

    void viewWithoutASelectionIsRefused()
    {
        const MessageBox refusal{.text = u"データが選択されていません。"_s,
                                 .title = u"Quillon システム運用部"_s};
        list->clearSelection();
        world->dialogs.expect(refusal);
        QVERIFY(WindowWorld::choose(*window, u"mnuDataView"_s)); // rows, but none selected
        choose(u"CATEGORY"_s);
        world->dialogs.expect(refusal);
        QTest::keyClick(list, Qt::Key_Return); // no rows at all
    }

    void deletedDatumIsToldWhenOpened()
    {
        session().OpenDb->connection().execute(u"DELETE FROM Main WHERE Object_ID = 'M-991231-001'"_s);
        list->selectRow(0);
        world->dialogs.expect(MessageBox{.text = u"指定されたデータが見つかりませんでした。"_s,
                                         .title = u"定義"_s,
                                         .buttons = Buttons::Ok,
                                         .icon = Icon::Information});
        QVERIFY(WindowWorld::choose(*window, u"mnuDataView"_s));
        QCOMPARE(world->windowCount(u"frmMainData"_s), 0);
    }

    void listKeepsWhatItHeldWhenItWasFilled()
    {
        WindowWorld::addRow(session().RsMain, {u"金"_s, u"M-991231-004"_s, u"Au"_s});
        QCOMPARE(rows().size(), 5);
        QVERIFY(compareText(count(), u"表示データ数 ： 5"));
    }

    void severalRowsCanBeSelected()
    {
        QVERIFY(!window->CheckMultiSelect());
        list->selectRow(0);
        QVERIFY(!window->CheckMultiSelect());
        list->selectAll();
        QVERIFY(window->CheckMultiSelect());
    }

    void typingSelectsTheRow()
    {
        choose(u"F_DIV"_s);
        WindowWorld::addRow(session().RsRefFile, {u"abc.txt"_s, u"F-991231-002"_s, u"未入力"_s});
        choose(u"F_DIV"_s);
        list->setFocus();
        QTest::keyClicks(list, u"ab"_s);
        QCOMPARE(list->selectedRow(), 1);
    }

    void rowsAreDraggedByTheirIdentifier()
    {
        const QModelIndexList dragged = {list->model()->index(1, 0), list->model()->index(1, 2)};
        const std::unique_ptr<QMimeData> data(list->model()->mimeData(dragged));
        QVERIFY(compareText(data->text(), u"M-991231-002"));
    }
};

QTEST_MAIN(TestDataList)
#include "test_data_list.moc"
