#include "store/record_set.h"
#include "store/schema.h"
#include "store/write_transaction.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestDeletingRows : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;
    QString path;

    const std::shared_ptr<RecordSet>& rows() { return world->session.RsMain; }
    /// The names that are left, one after the other.
    QString left() { return namesOf(*rows()); }
    static QString namesOf(const RecordSet& set)
    {
        QString names;
        set.forEachRow({0}, [&](const RecordSet::Row& row) { names += row.text(0); });
        return names;
    }

private Q_SLOTS:
    /// Six rows: a to f; "odd" says which are odd.
    void init()
    {
        world = std::make_unique<TestWorld>();
        path = world->createDatabase();
        world->openDatabase(path);
        int number = 0;
        for (const QChar letter : u"abcdef"_s) {
            ++number;
            TestWorld::addRow(rows(), {QString(letter), u"M-991231-00%1"_s.arg(number),
                                       number % 2 == 1 ? u"odd"_s : u"even"_s});
        }
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void everyRowOfAFilteredSetGoes()
    {
        const auto odd = rows()->filtered(u"Explanation = 'odd'"_s);
        odd->deleteEveryRow();
        QCOMPARE(left(), u"bdf"_s);
        QCOMPARE(odd->recordCount(), 0);
        QVERIFY(odd->endOfFile());
        odd->deleteEveryRow(); // nothing is left to delete
        QCOMPARE(left(), u"bdf"_s);
    }

    void everyRowOfATableGoes()
    {
        rows()->deleteEveryRow();
        QCOMPARE(left(), QString());
        rows()->deleteEveryRow();
        QCOMPARE(rows()->recordCount(), 0);
    }

    void everyRowGoesFromWhereverTheCursorStands()
    {
        rows()->moveLast();
        rows()->deleteEveryRow();
        QCOMPARE(left(), QString());
    }

    void emptySetHasNothingToDelete()
    {
        const auto none = rows()->filtered(u"Name = 'z'"_s);
        none->deleteEveryRow();
        none->deleteRowsIf({0}, [](const RecordSet::Row&) { return true; });
        QCOMPARE(left(), u"abcdef"_s);
    }

    void rowDeletedElsewhereIsPassedOver()
    {
        const auto odd = rows()->filtered(u"Explanation = 'odd'"_s);
        Database::open(path)->connection().execute(u"DELETE FROM Main WHERE Name IN ('a', 'c')"_s);
        odd->deleteEveryRow();
        QCOMPARE(left(), u"bdf"_s);
    }

    void refusedRowEndsTheWorkAndWhatWasDeletedStaysDeleted()
    {
        refuseDeletion(*world->session.OpenDb, u"Main"_s, u"OLD.Name = 'd'"_s);
        const auto deleteAll = [&] { rows()->deleteEveryRow(); };
        QCOMPARE(errorOf(deleteAll), errors::InvalidArgument);
        QCOMPARE(left(), u"def"_s);
        QCOMPARE(errorOf([&] { inWriteTransaction(*world->session.OpenDb, deleteAll); }),
                 errors::InvalidArgument);
        QCOMPARE(left(), u"def"_s);
        allowDeletion(*world->session.OpenDb, u"Main"_s);
        inWriteTransaction(*world->session.OpenDb, deleteAll);
        QCOMPARE(left(), QString());
    }

    void cursorBesideASetThatIsEmptiedNeverStandsOnAStranger()
    {
        const auto other = RecordSet::openTable(world->session.OpenDb, schema::Main());
        other->moveLast();
        rows()->deleteEveryRow();
        TestWorld::addRow(rows(), {u"g"_s, u"M-991231-007"_s, u""_s});
        QCOMPARE(errorOf([&] { other->field(0); }), errors::RecordDeleted);
    }

    void chosenRowsGoAndTheCursorStays()
    {
        rows()->findFirst(u"Name = 'd'"_s);
        rows()->deleteRowsIf(
            {0, 2}, [](const RecordSet::Row& row) { return row.text(1) == u"odd" || row.text(0) == u"f"; });
        QCOMPARE(left(), u"bd"_s);
        QCOMPARE(rows()->field(0), u"d"_s);
        rows()->moveNext();
        QVERIFY(rows()->endOfFile());
    }

    void choiceIsMadeBeforeAnythingIsDeleted()
    {
        QString asked;
        rows()->deleteRowsIf({0}, [&](const RecordSet::Row& row) {
            asked += row.text(0);
            return rows()->recordCount() == 6;
        });
        QCOMPARE(asked, u"abcdef"_s);
        QCOMPARE(left(), QString());
    }

    void onlyRowsOfTheSetAreAskedAbout()
    {
        const auto even = rows()->filtered(u"Explanation = 'even'"_s);
        QString asked;
        // Whoever counts while choosing must not be asked about strangers.
        int wanted = 2;
        even->deleteRowsIf({0}, [&](const RecordSet::Row& row) {
            asked += row.text(0);
            return wanted-- > 0;
        });
        QCOMPARE(asked, u"bdf"_s);
        QCOMPARE(left(), u"acef"_s);
    }

    void refusedRowAmongTheChosenEndsTheWork()
    {
        refuseDeletion(*world->session.OpenDb, u"Main"_s, u"OLD.Name = 'c'"_s);
        const auto deleteOdd = [&] {
            rows()->deleteRowsIf({2}, [](const RecordSet::Row& row) { return row.text(0) == u"odd"; });
        };
        QCOMPARE(errorOf(deleteOdd), errors::InvalidArgument);
        QCOMPARE(left(), u"bcdef"_s);
        // No lock is left behind.
        QVERIFY(othersMayWrite(path));
    }

    void rowAddedAfterwardsIsNeverTakenForADeletedOne()
    {
        rows()->moveLast();
        const auto other = RecordSet::openTable(world->session.OpenDb, schema::Main());
        other->deleteRowsIf({0}, [](const RecordSet::Row& row) { return row.text(0) == u"f"; });
        TestWorld::addRow(other, {u"g"_s, u"M-991231-007"_s, u""_s});
        QCOMPARE(errorOf([&] { rows()->field(0); }), errors::RecordDeleted);
        rows()->moveNext();
        QCOMPARE(rows()->field(0), u"g"_s);
    }

    void thousandsOfRowsGoAsOneDurableWrite()
    {
        constexpr int Count = 5000;
        sqlite::Transaction transaction(world->session.OpenDb->connection());
        for (int i = 0; i < Count; ++i)
            TestWorld::addRow(rows(), {u"x"_s, u"M-%1"_s.arg(i, 6, 10, QChar(u'0')), u"many"_s});
        transaction.commit();
        const WriteCounter writes(*world->session.OpenDb);
        const auto many = rows()->filtered(u"Explanation = 'many'"_s);
        QCOMPARE(many->recordCount(), Count);
        inWriteTransaction(*world->session.OpenDb, [&] { many->deleteEveryRow(); });
        QCOMPARE(writes.count, 1);
        QCOMPARE(left(), u"abcdef"_s);
    }
};

QTEST_GUILESS_MAIN(TestDeletingRows)
#include "test_deleting_rows.moc"
