#include "store/record_set.h"
#include "store/sqlite/transaction.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

#include <optional>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;
using sqlite::Transaction;

class TestTransaction : public QObject
{
    Q_OBJECT

private:
    static constexpr Transaction::Purpose Reading = Transaction::Purpose::Reading;

    std::unique_ptr<TestWorld> world;
    QString path;

    Database& database() { return *world->session.OpenDb; }
    sqlite::Connection& connection() { return database().connection(); }
    std::shared_ptr<RecordSet> rows() { return world->session.RsMain; }
    void addDatum(const QString& identifier) { TestWorld::addRow(rows(), {identifier, identifier, u""_s}); }

    static QStringList namesIn(const RecordSet& recordSet)
    {
        QStringList names;
        recordSet.forEachRow({0}, [&](const RecordSet::Row& row) { names << row.text(0).toString(); });
        return names;
    }
    /// What another program finds in the file.
    QStringList saved() { return namesIn(*RecordSet::openTable(Database::open(path), rows()->table())); }

    /// Undoes everything that has been written, as a full disk does. Fails with error 5.
    void failAltogether()
    {
        rows()->moveFirst();
        rows()->deleteRow();
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        path = world->createDatabase();
        world->openDatabase(path);
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void whatIsCommittedIsOneDurableWrite()
    {
        const WriteCounter writes(database());
        {
            Transaction transaction(connection());
            addDatum(u"a"_s);
            addDatum(u"b"_s);
            QCOMPARE(saved(), QStringList());
            transaction.commit();
            QCOMPARE(saved(), QStringList({u"a"_s, u"b"_s}));
        }
        QCOMPARE(writes.count, 1);
        QVERIFY(othersMayWrite(path));
    }

    void whatIsNotCommittedIsUndone()
    {
        {
            const Transaction transaction(connection());
            addDatum(u"a"_s);
        }
        QCOMPARE(namesIn(*rows()), QStringList());
        QVERIFY(!connection().inTransaction());
        QVERIFY(othersMayWrite(path));
    }

    void exceptionUndoesAndPassesOn()
    {
        const auto write = [&] {
            Transaction transaction(connection());
            addDatum(u"a"_s);
            throw std::runtime_error("in the middle");
            transaction.commit();
        };
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, write());
        QCOMPARE(namesIn(*rows()), QStringList());
        QVERIFY(othersMayWrite(path));
    }

    void beginningFailsWhileAnotherProgramWrites()
    {
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            QCOMPARE(errorOf([&] { const Transaction transaction(connection()); }), errors::Locked);
        }
        QVERIFY(othersMayWrite(path));
        Transaction transaction(connection());
        addDatum(u"a"_s);
        transaction.commit();
        QCOMPARE(saved(), QStringList(u"a"_s));
    }

    void commitThatFailsHasUndoneEverything()
    {
        {
            std::optional<ForeignLock> lock(std::in_place, database(), ForeignLock::Kind::Reading);
            Transaction transaction(connection());
            addDatum(u"a"_s);
            QCOMPARE(errorOf([&] { transaction.commit(); }), errors::Locked);
            // At once, and not only when the block ends.
            QVERIFY(!connection().inTransaction());
            QVERIFY(othersMayWrite(path));
            QCOMPARE(namesIn(*rows()), QStringList());
            lock.reset();
            addDatum(u"b"_s); // a write of its own, which the end of the block leaves alone
        }
        QCOMPARE(saved(), QStringList(u"b"_s));
    }

    void commitThatIsRefusedHasUndoneEverything()
    {
        sqlite3* const handle = ConnectionHandle::of(database());
        const auto refuse = [](void*) { return 1; };
        sqlite3_commit_hook(handle, refuse, nullptr);
        {
            Transaction transaction(connection());
            addDatum(u"a"_s);
            QCOMPARE(errorOf([&] { transaction.commit(); }), errors::InvalidArgument);
        }
        sqlite3_commit_hook(handle, nullptr, nullptr);
        QVERIFY(othersMayWrite(path));
        addDatum(u"b"_s);
        QCOMPARE(saved(), QStringList(u"b"_s));
    }

    void committingTwiceIsAMistake()
    {
        Transaction transaction(connection());
        addDatum(u"a"_s);
        transaction.commit();
        QVERIFY_THROWS_EXCEPTION(std::logic_error, transaction.commit());
        QCOMPARE(saved(), QStringList(u"a"_s));
    }

    void partIsDurableWithTheWhole()
    {
        const WriteCounter writes(database());
        {
            Transaction whole(connection());
            addDatum(u"a"_s);
            {
                Transaction part(connection());
                addDatum(u"b"_s);
                part.commit();
            }
            QVERIFY(connection().inTransaction());
            QCOMPARE(saved(), QStringList());
            whole.commit();
        }
        QCOMPARE(writes.count, 1);
        QCOMPARE(saved(), QStringList({u"a"_s, u"b"_s}));
    }

    void committedPartIsUndoneWithTheWhole()
    {
        {
            const Transaction whole(connection());
            addDatum(u"a"_s);
            Transaction part(connection());
            addDatum(u"b"_s);
            part.commit();
        }
        QCOMPARE(saved(), QStringList());
    }

    void partThatIsNotCommittedIsUndoneAlone()
    {
        Transaction whole(connection());
        addDatum(u"a"_s);
        {
            const Transaction part(connection());
            addDatum(u"b"_s);
            Transaction partOfThePart(connection());
            addDatum(u"c"_s);
            partOfThePart.commit();
        }
        QCOMPARE(namesIn(*rows()), QStringList(u"a"_s));
        addDatum(u"d"_s);
        QCOMPARE(saved(), QStringList()); // nothing has been committed behind the back of the whole
        whole.commit();
        QCOMPARE(saved(), QStringList({u"a"_s, u"d"_s}));
    }

    void exceptionInAPartLeavesTheWholeToItsOwner()
    {
        Transaction whole(connection());
        addDatum(u"a"_s);
        const auto fail = [&] {
            const Transaction part(connection());
            addDatum(u"b"_s);
            addDatum(u"a"_s);
        };
        QCOMPARE(errorOf(fail), errors::DuplicateKey);
        QVERIFY(connection().inTransaction());
        QCOMPARE(saved(), QStringList());
        whole.commit();
        QCOMPARE(saved(), QStringList(u"a"_s));
    }

    void afterAFailureThatUndoesEverythingNothingIsWritten()
    {
        addDatum(u"a"_s);
        refuseDeletion(database(), u"Main"_s, u"1"_s, Refusal::OfTheTransaction);
        {
            Transaction transaction(connection());
            addDatum(u"b"_s);
            QCOMPARE(errorOf([&] { failAltogether(); }), errors::InvalidArgument);
            // It would be durable by itself.
            QCOMPARE(errorOf([&] { addDatum(u"c"_s); }), errors::InvalidArgument);
            QCOMPARE(errorOf([&] { const Transaction part(connection()); }), errors::InvalidArgument);
            // Reading goes on.
            QCOMPARE(namesIn(*rows()), QStringList(u"a"_s));
            QCOMPARE(errorOf([&] { transaction.commit(); }), errors::InvalidArgument);
        }
        QCOMPARE(saved(), QStringList(u"a"_s));
        addDatum(u"d"_s);
        QCOMPARE(saved(), QStringList({u"a"_s, u"d"_s}));
    }

    void failureThatUndoesEverythingIsThatOfAllParts()
    {
        addDatum(u"a"_s);
        refuseDeletion(database(), u"Main"_s, u"1"_s, Refusal::OfTheTransaction);
        {
            Transaction whole(connection());
            addDatum(u"b"_s);
            Transaction part(connection());
            QCOMPARE(errorOf([&] { failAltogether(); }), errors::InvalidArgument);
            QCOMPARE(errorOf([&] { part.commit(); }), errors::InvalidArgument);
            QCOMPARE(errorOf([&] { whole.commit(); }), errors::InvalidArgument);
        }
        QCOMPARE(saved(), QStringList(u"a"_s));
        QVERIFY(othersMayWrite(path));
    }

    void transactionOfSomebodyElseIsNotCommitted()
    {
        connection().execute(u"BEGIN"_s);
        {
            Transaction part(connection());
            addDatum(u"a"_s);
            part.commit();
            const Transaction reading(connection(), Reading);
            const Transaction undone(connection());
            addDatum(u"b"_s);
        }
        QVERIFY(connection().inTransaction());
        QCOMPARE(saved(), QStringList());
        connection().execute(u"COMMIT"_s);
        QCOMPARE(saved(), QStringList(u"a"_s));
    }

    void transactionThatSomebodyElseHasEndedIsNotConfusedWithTheNext()
    {
        {
            Transaction transaction(connection());
            addDatum(u"a"_s);
            connection().execute(u"ROLLBACK"_s);
            connection().execute(u"BEGIN"_s);
            QVERIFY_THROWS_EXCEPTION(std::logic_error, addDatum(u"b"_s));
            QVERIFY_THROWS_EXCEPTION(std::logic_error, transaction.commit());
        }
        QVERIFY(connection().inTransaction());
        connection().execute(u"ROLLBACK"_s);
        QCOMPARE(saved(), QStringList());
    }

    void oneStateIsReadUntilTheEnd()
    {
        addDatum(u"a"_s);
        const auto other = Database::open(path);
        waitForNoLock(*other);
        const auto others = RecordSet::openTable(other, rows()->table());
        {
            const Transaction reading(connection(), Reading);
            QCOMPARE(rows()->recordCount(), 1);
            QCOMPARE(errorOf([&] { TestWorld::addRow(others, {u"b"_s, u"b"_s, u""_s}); }), errors::Locked);
            QCOMPARE(rows()->recordCount(), 1);
        }
        QVERIFY(!connection().inTransaction());
        TestWorld::addRow(others, {u"b"_s, u"b"_s, u""_s});
        QCOMPARE(rows()->recordCount(), 2);
    }

    void writingInATransactionToReadIsAMistake()
    {
        {
            const Transaction reading(connection(), Reading);
            QVERIFY_THROWS_EXCEPTION(std::logic_error, addDatum(u"a"_s));
            QVERIFY_THROWS_EXCEPTION(std::logic_error, const Transaction writing(connection()));
            QCOMPARE(rows()->recordCount(), 0);
        }
        QCOMPARE(saved(), QStringList());
        addDatum(u"a"_s);
        QCOMPARE(saved(), QStringList(u"a"_s));
    }

    void readingInsideAWriteEndsNothing()
    {
        Transaction writing(connection());
        addDatum(u"a"_s);
        {
            const Transaction reading(connection(), Reading);
            QCOMPARE(namesIn(*rows()), QStringList(u"a"_s));
            addDatum(u"b"_s); // of the write around it
        }
        addDatum(u"c"_s);
        QCOMPARE(saved(), QStringList());
        writing.commit();
        QCOMPARE(saved(), QStringList({u"a"_s, u"b"_s, u"c"_s}));
    }

    void nothingToReadIsCommitted()
    {
        Transaction reading(connection(), Reading);
        QVERIFY_THROWS_EXCEPTION(std::logic_error, reading.commit());
    }

    void passesGoOnWhenATransactionInTheirMiddleEnds_data()
    {
        QTest::addColumn<bool>("writes");
        QTest::newRow("to read") << false;
        QTest::newRow("to write, undone") << true;
    }
    void passesGoOnWhenATransactionInTheirMiddleEnds()
    {
        QFETCH(bool, writes);
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s})
            addDatum(name);
        QStringList names;
        rows()->forEachRow({0}, [&](const RecordSet::Row& row) {
            if (writes) {
                const Transaction undone(connection());
                addDatum(u"z"_s);
            } else {
                const Transaction reading(connection(), Reading);
                QCOMPARE(rows()->recordCount(), 3);
            }
            names << row.text(0).toString();
        });
        QCOMPARE(names, QStringList({u"a"_s, u"b"_s, u"c"_s}));
        QVERIFY(othersMayWrite(path));
    }
};

QTEST_GUILESS_MAIN(TestTransaction)
#include "test_transaction.moc"
