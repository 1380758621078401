#include "store/record_set.h"
#include "store/write_transaction.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestWriteTransaction : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;
    QString path;

    Database& database() { return *world->session.OpenDb; }
    void addDatum(const QString& identifier)
    {
        TestWorld::addRow(world->session.RsMain, {identifier, identifier, u""_s});
    }
    /// What another program finds in the file.
    QStringList saved()
    {
        QStringList names;
        RecordSet::openTable(Database::open(path), world->session.RsMain->table())
            ->forEachRow({0}, [&](const RecordSet::Row& row) { names << row.text(0).toString(); });
        return names;
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

    void manyChangesAreOneDurableWrite()
    {
        const WriteCounter writes(database());
        inWriteTransaction(database(), [&] {
            addDatum(u"a"_s);
            addDatum(u"b"_s);
            QCOMPARE(saved(), QStringList());
        });
        QCOMPARE(writes.count, 1);
        QCOMPARE(saved(), QStringList({u"a"_s, u"b"_s}));
    }

    void failureKeepsWhatWasWrittenBefore()
    {
        QCOMPARE(errorOf([&] {
                     inWriteTransaction(database(), [&] {
                         addDatum(u"a"_s);
                         addDatum(u"a"_s);
                         addDatum(u"b"_s);
                     });
                 }),
                 errors::DuplicateKey);
        QCOMPARE(saved(), QStringList(u"a"_s));
        QVERIFY(!database().connection().inTransaction());
    }

    void oneInsideAnotherIsAPartOfIt()
    {
        const WriteCounter writes(database());
        inWriteTransaction(database(), [&] {
            addDatum(u"a"_s);
            inWriteTransaction(database(), [&] { addDatum(u"b"_s); });
            QCOMPARE(saved(), QStringList());
            addDatum(u"c"_s);
        });
        QCOMPARE(writes.count, 1);
        QCOMPARE(saved(), QStringList({u"a"_s, u"b"_s, u"c"_s}));
    }

    void failureInsideAnotherCanBePassedOver()
    {
        inWriteTransaction(database(), [&] {
            addDatum(u"a"_s);
            const qint32 inner = errorOf([&] {
                inWriteTransaction(database(), [&] {
                    addDatum(u"b"_s);
                    addDatum(u"b"_s);
                });
            });
            QCOMPARE(inner, errors::DuplicateKey);
            addDatum(u"c"_s);
        });
        QCOMPARE(saved(), QStringList({u"a"_s, u"b"_s, u"c"_s}));
    }

    void failureThatUndoesEverythingIsPassedOn()
    {
        addDatum(u"a"_s);
        refuseDeletion(database(), u"Main"_s, u"1"_s, Refusal::OfTheTransaction);
        QCOMPARE(errorOf([&] {
                     inWriteTransaction(database(), [&] {
                         addDatum(u"b"_s);
                         world->session.RsMain->moveFirst();
                         world->session.RsMain->deleteRow();
                     });
                 }),
                 errors::InvalidArgument);
        QCOMPARE(saved(), QStringList(u"a"_s));
        // The next write stands on its own again.
        addDatum(u"c"_s);
        QCOMPARE(saved(), QStringList({u"a"_s, u"c"_s}));
    }

    void nothingBeginsWhileAnotherProgramWrites()
    {
        bool began = false;
        const auto write = [&] {
            inWriteTransaction(database(), [&] {
                began = true;
                addDatum(u"a"_s);
            });
        };
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            QCOMPARE(errorOf(write), errors::Locked);
            QVERIFY(!began);
        }
        QCOMPARE(errorOf(write), 0);
        QCOMPARE(saved(), QStringList(u"a"_s));
    }

    void writeThatCannotBeFinishedIsUndone()
    {
        const auto write = [&] { inWriteTransaction(database(), [&] { addDatum(u"a"_s); }); };
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Reading);
            QCOMPARE(errorOf(write), errors::Locked);
            QVERIFY(!database().connection().inTransaction());
            QCOMPARE(world->session.RsMain->recordCount(), 0);
        }
        QCOMPARE(errorOf(write), 0);
        QCOMPARE(saved(), QStringList(u"a"_s));
    }

    void anythingButAFailureOfTheProgramUndoesEverything()
    {
        QVERIFY_THROWS_EXCEPTION(std::logic_error, inWriteTransaction(database(), [&] {
                                     addDatum(u"a"_s);
                                     throw std::logic_error("a mistake");
                                 }));
        QCOMPARE(saved(), QStringList());
        QVERIFY(!database().connection().inTransaction());
    }
};

QTEST_GUILESS_MAIN(TestWriteTransaction)
#include "test_write_transaction.moc"
