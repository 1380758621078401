// Dropping rows of the data list on categories, with the events of a real drag.
#include "store/record_set.h"
#include "tests/main/main_window_fixture.h"
#include "tests/support/drag.h"
#include "tests/support/troubled_database.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestMainDropping : public MainWindowFixture
{
    Q_OBJECT

    const QString SeveralQuestion = u"選択された複数のデータを [ 乙 ] に分類してもよろしいですか。"_s;

    /// A place of the tree in the window.
    QPoint inWindow(const QPoint& place) const { return tree->viewport()->mapTo(window, place); }
    /// A whole drag and what comes of it.
    void dropText(const QString& text, const QPoint& place)
    {
        Drag drag(*window->windowHandle(), text);
        QVERIFY(drag.moveTo(inWindow(place)));
        QVERIFY(drag.dropAt(inWindow(place)));
        WindowWorld::processEvents();
        QCOMPARE(tree->dropHighlight(), 0);
    }
    QPoint besideTheNodes() const { return tree->viewport()->rect().bottomLeft() + QPoint(20, -5); }

private Q_SLOTS:
    void init()
    {
        makeWindow();
        openSampleDatabase();
        chooseNode(u"M_DIV"_s);
    }
    void cleanup() { endWorld(); }

    void nodeUnderTheDragIsMarked()
    {
        Drag drag(*window->windowHandle(), u"M-991231-003"_s);
        QVERIFY(drag.moveTo(inWindow(nodeAt(u"B"_s))));
        QCOMPARE(tree->dropHighlight(), tree->nodes().position(u"B"_s));
        QVERIFY(drag.moveTo(inWindow(nodeAt(u"M_DIV"_s))));
        QCOMPARE(tree->dropHighlight(), tree->nodes().position(u"M_DIV"_s));
        QVERIFY(drag.moveTo(inWindow(besideTheNodes())));
        QCOMPARE(tree->dropHighlight(), 0);
        QVERIFY(drag.moveTo(inWindow(nodeAt(u"B"_s))));
        drag.leave();
        QCOMPARE(tree->dropHighlight(), 0);
        QCOMPARE(selectedKey(), u"M_DIV"_s);
    }

    void oneRowIsFiledAfterTheQuestion()
    {
        selectRows({2});
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok); // sic: no full stop
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships().size(), 5);
        QCOMPARE(memberships().last(), u"B|M-991231-003"_s);
    }

    void questionWaitsForTheEndOfTheDrag()
    {
        selectRows({2});
        Drag drag(*window->windowHandle(), u"M-991231-003"_s);
        QVERIFY(drag.moveTo(inWindow(nodeAt(u"B"_s))));
        QVERIFY(drag.dropAt(inWindow(nodeAt(u"B"_s))));
        QCOMPARE(world->dialogs.takeComplaints(), QStringList()); // no box so far
        QCOMPARE(tree->dropHighlight(), tree->nodes().position(u"B"_s));
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok);
        WindowWorld::processEvents();
        QCOMPARE(memberships().last(), u"B|M-991231-003"_s);
        QCOMPARE(tree->dropHighlight(), 0);
    }

    void cancelFilesNothing()
    {
        const QStringList before = memberships();
        selectRows({2});
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Cancel);
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        selectRows({2, 3});
        expectQuestion(SeveralQuestion, Answer::Cancel);
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships(), before);
    }

    void severalRowsAreFiledAndTheListStays()
    {
        const QStringList listed = rows();
        selectRows({0, 2, 4});
        expectQuestion(SeveralQuestion, Answer::Ok);
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships().mid(4),
                 QStringList({u"B|M-991231-001"_s, u"B|M-991231-003"_s, u"B|M-991231-005"_s}));
        QCOMPARE(rows(), listed);
        QCOMPARE(list->selectedRows(), (std::vector<int>{0, 2, 4}));
        QCOMPARE(selectedKey(), u"M_DIV"_s);
    }

    void filingBelowTakesTheDataOutAbove()
    {
        selectRows({0, 1});
        expectQuestion(u"選択された複数のデータを [ 甲の一 ] に分類してもよろしいですか。"_s, Answer::Ok);
        dropText(u"M-991231-001"_s, nodeAt(u"A-A"_s));
        QCOMPARE(memberships(),
                 QStringList({u"A-A|M-991231-001"_s, u"A-B|R-991231-001"_s, u"A-A|M-991231-002"_s}));
    }

    void datumFiledThereAlreadyIsNotFiledTwice()
    {
        const QStringList before = memberships();
        selectRows({1});
        expectQuestion(u"[ 火 ] を[ 甲 ]へ分類してもよろしいですか"_s, Answer::Ok);
        dropText(u"M-991231-002"_s, nodeAt(u"A"_s));
        QCOMPARE(memberships(), before);
    }

    void fixedNodesAndBlankSpaceAreRefused_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("identifier") << u"M-991231-003"_s;
        QTest::newRow("text of another length") << u"M-991231-03"_s; // the node is looked at first
    }

    void fixedNodesAndBlankSpaceAreRefused()
    {
        QFETCH(QString, text);
        const QStringList before = memberships();
        selectRows({2});
        for (const QString& key : {u"DIV"_s, u"M_DIV"_s, u"CATEGORY"_s}) {
            expectNotice(u"選択された項目はカテゴリではありません｡"_s); // sic: a half-width full stop
            dropText(text, nodeAt(key));
        }
        expectNotice(u"選択された項目はカテゴリではありません｡"_s);
        dropText(text, besideTheNodes());
        QCOMPARE(memberships(), before);
    }

    void textOfAnotherLengthDoesNothing_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("eleven") << u"M-991231-03"_s;
        QTest::newRow("thirteen") << u"M-991231-0003"_s;
        QTest::newRow("a line break behind it") << u"M-991231-003\n"_s;
        QTest::newRow("none") << u""_s;
    }

    void textOfAnotherLengthDoesNothing()
    {
        QFETCH(QString, text);
        const QStringList before = memberships();
        selectRows({2});
        dropText(text, nodeAt(u"B"_s));
        QCOMPARE(memberships(), before);
    }

    void datumThatIsNotSelectedIsFiledAlone_data()
    {
        QTest::addColumn<std::vector<int>>("selected");
        QTest::newRow("nothing selected") << std::vector<int>{};
        QTest::newRow("another one selected") << std::vector<int>{0};
        QTest::newRow("several others selected") << std::vector<int>{0, 1, 3};
    }

    void datumThatIsNotSelectedIsFiledAlone()
    {
        // One that is dragged from the search results, for instance.
        QFETCH(std::vector<int>, selected);
        selectRows(selected);
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok);
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships().mid(4), QStringList(u"B|M-991231-003"_s));
        QCOMPARE(list->selectedRows(), selected);
        expectQuestion(u"[ 論文 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok); // not even listed
        dropText(u"R-991231-001"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships().mid(5), QStringList(u"B|R-991231-001"_s));
        QCOMPARE(rows().size(), 5);
    }

    void questionReadsBothNamesWhenItAsks()
    {
        database().connection().execute(u"UPDATE Main SET Name = '砂' WHERE Name = '土'"_s);
        database().connection().execute(u"UPDATE Category_ID SET Name = '丁' WHERE Name = '乙'"_s);
        selectRows({2});
        expectQuestion(u"[ 砂 ] を[ 丁 ]へ分類してもよろしいですか"_s, Answer::Ok);
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships().last(), u"B|M-991231-003"_s);
        selectRows({2, 3});
        expectQuestion(u"選択された複数のデータを [ 丁 ] に分類してもよろしいですか。"_s, Answer::Cancel);
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
    }

    void dataThatAreGoneOrOthersByNowArePassedOverAndToldOnce()
    {
        database().connection().execute(u"DELETE FROM Main WHERE Name = '火'"_s);
        database().connection().execute(u"UPDATE Main SET Name = '砂' WHERE Name = '土'"_s);
        selectRows({1, 2, 3});
        expectQuestion(SeveralQuestion, Answer::Ok);
        expectNotice(u"指定されたデータが見つかりませんでした。\r\n(2 件)"_s, u"Quillon データ調査分析部"_s);
        dropText(u"M-991231-004"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships().mid(4), QStringList(u"B|M-991231-004"_s));
        QCOMPARE(names(), QStringList({u"水"_s, u"金"_s, u"木"_s}));
    }

    void datumThatIsAnotherByTheAnswerIsNotFiled()
    {
        selectRows({2});
        expectQuestion(u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Ok);
        world->dialogs.meanwhile([&] {
            const auto other = Database::open(database().path());
            other->connection().execute(u"DELETE FROM Main WHERE Name = '土'"_s);
            other->connection().execute(u"INSERT INTO Main VALUES ('別', 'M-991231-003', '')"_s);
        });
        expectNotice(u"指定されたデータが見つかりませんでした。"_s, u"Quillon データ調査分析部"_s);
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships().size(), 4);
        QCOMPARE(names(), QStringList({u"水"_s, u"火"_s, u"金"_s, u"木"_s}));
    }

    void nothingIsFiledInACategoryThatIsGone_data()
    {
        QTest::addColumn<bool>("asked");
        QTest::addColumn<QString>("sql");
        const QString gone = u"DELETE FROM Category_ID WHERE Category_ID = 'B'"_s;
        QTest::newRow("before the question") << false << gone;
        QTest::newRow("before the answer") << true << gone;
        QTest::newRow("another has its identifier")
            << true << u"UPDATE Category_ID SET Name = '別' WHERE Category_ID = 'B'"_s;
    }

    void nothingIsFiledInACategoryThatIsGone()
    {
        QFETCH(bool, asked);
        QFETCH(QString, sql);
        const auto change = [&] { Database::open(database().path())->connection().execute(sql); };
        for (const bool several : {false, true}) {
            selectRows(several ? std::vector<int>{2, 3} : std::vector<int>{2});
            if (asked) {
                database().connection().execute(u"INSERT OR REPLACE INTO Category_ID VALUES ('B', '乙')"_s);
                expectQuestion(several ? SeveralQuestion : u"[ 土 ] を[ 乙 ]へ分類してもよろしいですか"_s,
                               Answer::Ok);
                world->dialogs.meanwhile(change);
            } else {
                change();
            }
            expectFailure(u"DeleteData"_s, errors::NoCurrentRecord); // sic: under the name of deleting
            dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
            QCOMPARE(memberships().size(), 4);
            QCOMPARE(rows().size(), 5);
        }
    }

    void unknownIdentifierIsAskedAboutAsUnknown()
    {
        selectRows({2});
        expectQuestion(u"[ 不明 ] を[ 乙 ]へ分類してもよろしいですか"_s, Answer::Cancel);
        dropText(u"123456789012"_s, nodeAt(u"B"_s));
    }

    void whatIsNoTextIsNotTaken()
    {
        Drag drag(*window->windowHandle());
        drag.data().setData(u"application/octet-stream"_s, "x");
        QVERIFY(!drag.moveTo(inWindow(nodeAt(u"B"_s))));
        QVERIFY(!drag.dropAt(inWindow(nodeAt(u"B"_s))));
        WindowWorld::processEvents();
        QCOMPARE(memberships().size(), 4);
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
        const QStringList before = memberships();
        const QStringList listed = rows();
        selectRows({2, 3, 4});
        {
            const ForeignLock lock(database(),
                                   writing ? ForeignLock::Kind::Writing : ForeignLock::Kind::Reading);
            expectQuestion(SeveralQuestion, Answer::Ok);
            expectFailure(u"DeleteData"_s, errors::Locked); // sic: under the name of deleting
            dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        }
        QCOMPARE(memberships(), before);
        QCOMPARE(rows(), listed);
    }

    void rowThatCannotBeFiledIsPassedOver()
    {
        database().connection().execute(
            u"CREATE TEMP TRIGGER refusal BEFORE INSERT ON main.Category WHEN NEW.Object_ID = 'M-991231-004' "
            u"BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
        selectRows({2, 3, 4});
        expectQuestion(SeveralQuestion, Answer::Ok);
        expectFailure(u"ClassifyCategory"_s, errors::InvalidArgument);
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships().mid(4), QStringList({u"B|M-991231-003"_s, u"B|M-991231-005"_s}));
    }

    void failureThatUndoesEverythingFilesNothing()
    {
        const QStringList before = memberships();
        database().connection().execute(
            u"CREATE TEMP TRIGGER refusal BEFORE INSERT ON main.Category WHEN NEW.Object_ID = 'M-991231-004' "
            u"BEGIN SELECT RAISE(ROLLBACK, 'refused'); END"_s);
        selectRows({2, 3, 4});
        expectQuestion(SeveralQuestion, Answer::Ok);
        expectFailure(u"DeleteData"_s, errors::InvalidArgument); // sic: under the name of deleting
        dropText(u"M-991231-003"_s, nodeAt(u"B"_s));
        QCOMPARE(memberships(), before);
    }
};

QTEST_MAIN(TestMainDropping)
#include "test_main_dropping.moc"
