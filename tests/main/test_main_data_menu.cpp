// The data menu: opening, deleting and unclassifying the rows of the data list.
#include "store/filter_result.h"
#include "store/record_set.h"
#include "tests/main/main_window_fixture.h"
#include "tests/support/troubled_database.h"

#include <QRandomGenerator>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestMainDataMenu : public MainWindowFixture
{
    Q_OBJECT

    const QString NothingSelected = u"データが選択されていません。"_s;
    const QString SystemOperation = u"Quillon システム運用部"_s;

    void chooseEntry(const QString& name) { QVERIFY(WindowWorld::choose(*window, name)); }
    void expectNotFound()
    {
        expectNotice(u"指定されたデータが見つかりませんでした。"_s, u"Quillon データ調査分析部"_s);
    }

private Q_SLOTS:
    void init()
    {
        makeWindow();
        openSampleDatabase();
    }
    void cleanup() { endWorld(); }

    void nothingSelectedIsToldByEveryEntry()
    {
        for (const bool hasRows : {true, false}) {
            chooseNode(hasRows ? u"A"_s : u"B"_s);
            list->clearSelection();
            expectNotice(NothingSelected, SystemOperation);
            chooseEntry(u"mnuDataView"_s);
            expectNotice(NothingSelected);
            chooseEntry(u"mnuDataDelete"_s);
            expectNotice(NothingSelected);
            chooseEntry(u"mnuDataCategoryDelete"_s);
            expectNotice(NothingSelected);
            window->DeleteSelectedData();
        }
        QCOMPARE(definitions().size(), 5);
        QCOMPARE(memberships().size(), 4);
    }

    void viewOpensTheSelectedDatum()
    {
        selectRows({1});
        chooseEntry(u"mnuDataView"_s);
        QVERIFY(compareText(world->window<FormWindow>(u"frmMainData"_s)->windowTitle(), u"定義画面 - 火"));
        selectRows({5});
        chooseEntry(u"mnuDataView"_s);
        QVERIFY(compareText(world->window<FormWindow>(u"frmRefDoc"_s)->windowTitle(), u"文献画面-論文"));
    }

    void oneRowIsNamedInTheQuestion()
    {
        selectRows({0});
        expectQuestion(u"<水> を削除しますか。"_s, Answer::Cancel);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(rows().size(), 7);
        expectQuestion(u"<水> を削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(names(), QStringList({u"火"_s, u"土"_s, u"金"_s, u"木"_s, u"論文"_s, u"図.png"_s}));
        QCOMPARE(definitions().first(), u"火|M-991231-002|炎"_s);
        QCOMPARE(memberships(), QStringList({u"A|M-991231-002"_s, u"A-B|R-991231-001"_s}));
        QVERIFY(compareText(count(), u"表示データ数 ： 7")); // it follows fills only
    }

    void threeSelectedRowsGoAndNoOthers()
    {
        selectRows({1, 3, 5});
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Cancel);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(rows().size(), 7);
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(names(), QStringList({u"水"_s, u"土"_s, u"木"_s, u"図.png"_s}));
        QCOMPARE(definitions(),
                 QStringList({u"水|M-991231-001|H2O"_s, u"土|M-991231-003|地"_s, u"木|M-991231-005|樹"_s}));
        QCOMPARE(WindowWorld::rowsOf(session().RsRefDoc), QStringList());
        QCOMPARE(memberships(), QStringList({u"A|M-991231-001"_s, u"A-A|M-991231-001"_s}));
    }

    void deletedRowsAreThoseOfTheSortedList()
    {
        list->rows().sortByColumn(2); // F, M 001 to 005, R
        selectRows({0, 6});
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(names(), QStringList({u"水"_s, u"火"_s, u"土"_s, u"金"_s, u"木"_s}));
        QCOMPARE(WindowWorld::rowsOf(session().RsRefFile), QStringList());
        QCOMPARE(WindowWorld::rowsOf(session().RsRefDoc), QStringList());
    }

    void missingDatumIsToldAndItsRowLeavesTheList()
    {
        database().connection().execute(u"DELETE FROM Main WHERE Object_ID = 'M-991231-002'"_s);
        selectRows({0, 1, 2});
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        expectNotFound();
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(names(), QStringList({u"金"_s, u"木"_s, u"論文"_s, u"図.png"_s}));
        QCOMPARE(memberships(), QStringList({u"A-B|R-991231-001"_s}));
    }

    void severalMissingDataAreToldOnceWithTheirNumber()
    {
        database().connection().execute(u"DELETE FROM Main WHERE Object_ID < 'M-991231-003'"_s);
        selectRows({0, 1, 2});
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        expectNotice(u"指定されたデータが見つかりませんでした。\r\n(2 件)"_s, u"Quillon データ調査分析部"_s);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(names(), QStringList({u"金"_s, u"木"_s, u"論文"_s, u"図.png"_s}));
    }

    void questionForOneRowReadsTheNameWhenItAsks()
    {
        database().connection().execute(u"UPDATE Main SET Name = '湯' WHERE Name = '水'"_s);
        selectRows({0});
        expectQuestion(u"<湯> を削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(definitions().first(), u"火|M-991231-002|炎"_s);
        QCOMPARE(names().first(), u"火"_s);
    }

    void severalRowsPassOverTheOneThatHasAnotherNameByNow()
    {
        database().connection().execute(u"UPDATE Main SET Name = '湯' WHERE Name = '水'"_s);
        selectRows({0, 2});
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        expectNotFound();
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(definitions(), QStringList({u"湯|M-991231-001|H2O"_s, u"火|M-991231-002|炎"_s,
                                             u"金|M-991231-004|Au"_s, u"木|M-991231-005|樹"_s}));
        QCOMPARE(memberships().size(), 4);
        QCOMPARE(names(), QStringList({u"火"_s, u"金"_s, u"木"_s, u"論文"_s, u"図.png"_s}));
    }

    void datumListedTwiceIsDeletedOnce()
    {
        chooseNode(u"A"_s);
        QCOMPARE(names(), QStringList({u"水"_s, u"火"_s, u"水"_s, u"論文"_s}));
        selectRows({0, 2});
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        expectNotFound();
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(names(), QStringList({u"火"_s, u"論文"_s}));
        QCOMPARE(definitions().size(), 4);
        QCOMPARE(memberships(), QStringList({u"A|M-991231-002"_s, u"A-B|R-991231-001"_s}));
    }

    void refusedDatumStaysInListAndDatabase()
    {
        refuseDeletion(database(), u"Main"_s, u"OLD.Object_ID = 'M-991231-002'"_s);
        selectRows({0, 1, 2});
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        expectFailure(u"DeleteData"_s, errors::InvalidArgument);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(names(), QStringList({u"火"_s, u"金"_s, u"木"_s, u"論文"_s, u"図.png"_s}));
        QCOMPARE(definitions(),
                 QStringList({u"火|M-991231-002|炎"_s, u"金|M-991231-004|Au"_s, u"木|M-991231-005|樹"_s}));
    }

    void datumThatCannotBeReadIsNeitherAskedAboutNorTakenForGone()
    {
        selectRows({0});
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Exclusive);
            for (int way = 0; way < 3; ++way) {
                expectFailure(u"GetDataName"_s, errors::Locked);
                if (way == 0)
                    chooseEntry(u"mnuDataDelete"_s);
                else if (way == 1)
                    pressKey(list, Qt::Key_Delete);
                else
                    window->DeleteSelectedData();
                QCOMPARE(world->dialogs.takeComplaints(), QStringList());
                QCOMPARE(rows().size(), 7);
            }
        }
        QCOMPARE(definitions().size(), 5);
    }

    void lockedDatabaseIsToldOnceForAllRows_data()
    {
        QTest::addColumn<bool>("writing");
        QTest::newRow("another program writes") << true;
        QTest::newRow("another program reads") << false;
    }

    void lockedDatabaseIsToldOnceForAllRows()
    {
        QFETCH(bool, writing);
        const QStringList listed = rows();
        selectRows({0, 1, 2});
        {
            const ForeignLock lock(database(),
                                   writing ? ForeignLock::Kind::Writing : ForeignLock::Kind::Reading);
            expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
            expectFailure(u"DeleteData"_s, errors::Locked);
            chooseEntry(u"mnuDataDelete"_s);
        }
        QCOMPARE(rows(), listed);
        QCOMPARE(definitions().size(), 5);
        QCOMPARE(memberships().size(), 4);
        expectQuestion(u"選択された複数のデータを削除しますか。"_s, Answer::Ok);
        chooseEntry(u"mnuDataDelete"_s);
        QCOMPARE(names(), QStringList({u"金"_s, u"木"_s, u"論文"_s, u"図.png"_s}));
        QCOMPARE(definitions().size(), 2);
    }

    void onlyCategoriesCanBeLeft()
    {
        for (const QString& key : {u"DIV"_s, u"M_DIV_NOCATEGORY"_s, u"CATEGORY"_s}) {
            chooseNode(key);
            list->selectAll();
            expectNotice(u"カテゴリが選択されていません。"_s);
            chooseEntry(u"mnuDataCategoryDelete"_s);
        }
        QCOMPARE(memberships().size(), 4);
    }

    void selectedRowsLeaveTheCategory()
    {
        chooseNode(u"A"_s);
        QCOMPARE(rows(), QStringList({u"水|定義|M-991231-001|NO"_s, u"火|定義|M-991231-002|NO"_s,
                                      u"水|定義|M-991231-001|YES"_s, u"論文|文献|R-991231-001|YES"_s}));
        selectRows({1, 3});
        chooseEntry(u"mnuDataCategoryDelete"_s); // without a question
        QCOMPARE(rows(), QStringList({u"水|定義|M-991231-001|NO"_s, u"水|定義|M-991231-001|YES"_s}));
        QCOMPARE(memberships(), QStringList({u"A|M-991231-001"_s, u"A-A|M-991231-001"_s}));
        QCOMPARE(definitions().size(), 5);
        QVERIFY(compareText(count(), u"表示データ数 ： 4")); // it follows fills only
    }

    void eachRowOfADatumListedTwiceTakesOneMembership()
    {
        chooseNode(u"A"_s);
        selectRows({2}); // the row of the subcategory; the membership that comes first goes
        chooseEntry(u"mnuDataCategoryDelete"_s);
        QCOMPARE(rows().first(), u"水|定義|M-991231-001|NO"_s);
        QCOMPARE(memberships(),
                 QStringList({u"A-A|M-991231-001"_s, u"A|M-991231-002"_s, u"A-B|R-991231-001"_s}));
        chooseNode(u"A"_s);
        WindowWorld::addRow(session().RsCategory, {u"A"_s, u"M-991231-001"_s});
        chooseNode(u"A"_s);
        selectRows({1, 2}); // both rows of 水
        chooseEntry(u"mnuDataCategoryDelete"_s);
        QCOMPARE(names(), QStringList({u"火"_s, u"論文"_s}));
        QCOMPARE(memberships(), QStringList({u"A|M-991231-002"_s, u"A-B|R-991231-001"_s}));
    }

    void rowThatIsNotFiledAnyMoreIsPassedOverAndTold()
    {
        chooseNode(u"A"_s);
        database().connection().execute(u"DELETE FROM Category WHERE Object_ID = 'M-991231-002'"_s);
        list->selectAll();
        expectNotFound();
        chooseEntry(u"mnuDataCategoryDelete"_s);
        QCOMPARE(names(), QStringList());
        QCOMPARE(memberships(), QStringList());
    }

    void rowsThatAreGoneOrOthersByNowKeepTheirMemberships()
    {
        chooseNode(u"A"_s);
        database().connection().execute(u"UPDATE Main SET Name = '湯' WHERE Name = '水'"_s);
        selectRows({0, 1, 2}); // 水 twice, and 火
        expectNotice(u"指定されたデータが見つかりませんでした。\r\n(2 件)"_s, u"Quillon データ調査分析部"_s);
        chooseEntry(u"mnuDataCategoryDelete"_s);
        QCOMPARE(names(), QStringList(u"論文"_s));
        QCOMPARE(memberships(),
                 QStringList({u"A|M-991231-001"_s, u"A-A|M-991231-001"_s, u"A-B|R-991231-001"_s}));
    }

    void rowWhoseDatumWasMissingAlreadyLeavesTheCategory()
    {
        database().connection().execute(u"DELETE FROM Main WHERE Name = '火'"_s);
        chooseNode(u"A"_s);
        selectRows({1});
        QCOMPARE(list->rows().text(1, 0), u"不明"_s);
        chooseEntry(u"mnuDataCategoryDelete"_s);
        QCOMPARE(memberships(),
                 QStringList({u"A|M-991231-001"_s, u"A-A|M-991231-001"_s, u"A-B|R-991231-001"_s}));
    }

    void rowsOfACategoryThatIsAnotherByNowAreNotTakenOut()
    {
        chooseNode(u"B"_s);
        WindowWorld::addRow(session().RsCategory, {u"B"_s, u"M-991231-003"_s});
        chooseNode(u"B"_s);
        database().connection().execute(u"DELETE FROM Category_ID WHERE Category_ID = 'B'"_s);
        WindowWorld::addRow(session().RsCategoryID, {u"B"_s, u"別"_s});
        selectRows({0});
        expectPlainFailure(errors::NoCurrentRecord);
        chooseEntry(u"mnuDataCategoryDelete"_s);
        QCOMPARE(memberships().last(), u"B|M-991231-003"_s);
        QCOMPARE(names(), QStringList(u"土"_s));
    }

    void lockedDatabaseKeepsTheMemberships()
    {
        chooseNode(u"A"_s);
        const QStringList listed = rows();
        list->selectAll();
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            expectPlainFailure(errors::Locked);
            chooseEntry(u"mnuDataCategoryDelete"_s);
        }
        QCOMPARE(rows(), listed);
        QCOMPARE(memberships().size(), 4);
    }

    void leavingMatchesTakingRowAfterRow()
    {
        // The work on all rows at once against the plain description, on random memberships and selections.
        QRandomGenerator random(20260202);
        const QStringList keys = {u"A"_s, u"A-A"_s, u"A-B"_s, u"A-A-A"_s, u"AB"_s, u"B"_s, u"a"_s};
        for (const QString& key : {u"A-A-A"_s, u"AB"_s, u"a"_s})
            WindowWorld::addRow(session().RsCategoryID, {key, u"名"_s});
        world->open(database().path());
        int passedOver = 0;
        int taken = 0;
        for (int round = 0; round < 200; ++round) {
            sqlite::Transaction transaction(database().connection());
            database().connection().execute(u"DELETE FROM Category"_s);
            for (int i = random.bounded(25); i > 0; --i)
                database().connection().execute(
                    u"INSERT OR IGNORE INTO Category VALUES ('%1', 'M-991231-00%2')"_s.arg(
                        keys[random.bounded(keys.size())], QString::number(1 + random.bounded(5))));
            transaction.commit();
            const QString& key = keys[random.bounded(keys.size())];
            chooseNode(key);
            if (random.bounded(2) == 0) // something has been unclassified elsewhere meanwhile
                database().connection().execute(
                    u"DELETE FROM Category WHERE Object_ID = 'M-991231-00%1'"_s.arg(1 + random.bounded(5)));
            std::vector<int> selected;
            for (int row = 0; row < list->rows().rowCount(); ++row) {
                if (random.bounded(2) == 0)
                    selected.push_back(row);
            }
            if (selected.empty())
                continue;
            selectRows(selected);

            QStringList listed = rows();
            QStringList filed = memberships();
            int missing = 0;
            for (const int row : selected) {
                const QString identifier = list->rows().text(row, 2).toString();
                const auto found = std::find_if(filed.begin(), filed.end(), [&](const QString& membership) {
                    return membership.startsWith(key) && membership.section(u'|', 1) == identifier;
                });
                if (found == filed.end())
                    ++missing;
                else
                    filed.erase(found);
            }
            for (std::size_t i = selected.size(); i > 0; --i)
                listed.removeAt(selected[i - 1]);
            if (missing == 1)
                expectNotFound();
            else if (missing > 1)
                expectNotice(u"指定されたデータが見つかりませんでした。\r\n(%1 件)"_s.arg(missing),
                             u"Quillon データ調査分析部"_s);
            chooseEntry(u"mnuDataCategoryDelete"_s);
            QCOMPARE(memberships(), filed);
            QCOMPARE(rows(), listed);
            QCOMPARE(world->dialogs.takeComplaints(), QStringList());
            passedOver += missing;
            taken += static_cast<int>(selected.size()) - missing;
        }
        QVERIFY(passedOver > 3);
        QVERIFY(taken > 30);
    }

    void deletingWithoutAQuestionDeletesNothingThatIsNotListed()
    {
        database().connection().execute(u"UPDATE Main SET Name = '湯' WHERE Name = '水'"_s);
        selectRows({0});
        expectNotFound();
        window->DeleteSelectedData();
        QCOMPARE(definitions().size(), 5);
    }

    void deletingWithoutAQuestionTellsAfterwards()
    {
        selectRows({3, 1});
        list->setCurrentIndex(list->rows().index(1, 0));
        expectNotice(u"< 火 >を削除しました。"_s, u"Quillon 定義データ管理部"_s);
        window->DeleteSelectedData();
        QCOMPARE(rows().size(), 7); // the list is left as it is
        QCOMPARE(definitions().size(), 4);
        QCOMPARE(memberships().size(), 3);
        expectNotFound(); // the row is still there and can be tried again
        window->DeleteSelectedData();
        QCOMPARE(definitions().size(), 4);
    }
};

QTEST_MAIN(TestMainDataMenu)
#include "test_main_data_menu.moc"
