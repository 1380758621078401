#include "core/data_records.h"
#include "store/data_kinds.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox NotFound{.text = u"指定されたデータが見つかりませんでした。"_s,
                          .title = u"Quillon データ調査分析部"_s};

constexpr Deletion Deleted = Deletion::Deleted;
constexpr Deletion Gone = Deletion::Gone;
constexpr Deletion Kept = Deletion::Kept;

MessageBox severalNotFound(int count)
{
    return {.text = NotFound.text + u"\r\n(%1 件)"_s.arg(count), .title = NotFound.title};
}

/// Definition `number` of the tests' databases.
QString datum(int number)
{
    return u"M-991231-%1"_s.arg(number, 3, 10, QChar(u'0'));
}

QStringList contentOf(Session& session)
{
    QStringList content;
    for (const auto& table : {session.RsMain, session.RsRefDoc, session.RsRefFile, session.RsLink,
                              session.RsCategoryID, session.RsCategory})
        content << table->table().name + u':' << TestWorld::rowsOf(table);
    return content;
}

} // namespace

class TestDeletionOfMany : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;
    QString path;

    Session& session() { return world->session; }
    Database& database() { return *world->session.OpenDb; }
    std::vector<Deletion> deleteMany(const std::vector<ListedDatum>& data)
    {
        std::size_t advanced = 0;
        auto outcome = DeleteManyData(session(), data, [&] { ++advanced; });
        if (advanced != data.size())
            qFatal("advanced %d times", static_cast<int>(advanced));
        return outcome;
    }
    /// The same for data that are listed under their present names.
    std::vector<Deletion> deleteMany(const QStringList& identifiers)
    {
        return deleteMany(listed(identifiers));
    }
    std::vector<ListedDatum> listed(const QStringList& identifiers)
    {
        std::vector<ListedDatum> data;
        for (const QString& identifier : identifiers)
            data.push_back({.identifier = identifier, .name = nameOf(identifier)});
        return data;
    }
    /// Without the boxes of looking up what cannot be looked up.
    QString nameOf(const QString& identifier)
    {
        const DataKind* const kind = kindOf(identifier);
        if (kind == nullptr || identifier.contains(u'\''))
            return {};
        return GetDataName(session(), identifier);
    }
    /// Data 1 to `count`, each linked to the next one and filed in "A".
    void addChain(int count)
    {
        sqlite::Transaction transaction(database().connection());
        for (int i = 1; i <= count; ++i) {
            TestWorld::addRow(session().RsMain, {u"語%1"_s.arg(i), datum(i), u""_s});
            TestWorld::addRow(session().RsLink, {datum(i), datum(i + 1)});
            TestWorld::addRow(session().RsCategory, {u"A"_s, datum(i)});
        }
        transaction.commit();
    }
    QStringList names()
    {
        QStringList list;
        session().RsMain->forEachRow({0}, [&](const RecordSet::Row& row) { list << row.text(0).toString(); });
        return list;
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

    void manyDataGoWithTheirRelationsAsOneDurableWrite()
    {
        addChain(300);
        const WriteCounter writes(database());
        QStringList doomed;
        for (int i = 2; i <= 300; ++i)
            doomed << datum(i);
        QCOMPARE(deleteMany(doomed), std::vector<Deletion>(299, Deleted));
        QCOMPARE(writes.count, 1);
        QCOMPARE(names(), QStringList(u"語1"_s));
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList());
        QCOMPARE(TestWorld::rowsOf(session().RsCategory), QStringList(u"A|M-991231-001"_s));
    }

    void linksOfOneDatumGoAsOneDurableWrite()
    {
        addChain(500);
        sqlite::Transaction transaction(database().connection());
        for (int i = 3; i <= 500; ++i)
            TestWorld::addRow(session().RsLink, {datum(1), datum(i)});
        transaction.commit();
        const WriteCounter writes(database());
        QVERIFY(DeleteData(session(), datum(1), 0));
        QCOMPARE(writes.count, 1);
        QCOMPARE(session().RsLink->recordCount(), 499);
    }

    void datumWithoutRelationsIsOneDurableWrite()
    {
        TestWorld::addRow(session().RsMain, {u"語"_s, datum(1), u""_s});
        const WriteCounter writes(database());
        QVERIFY(DeleteData(session(), datum(1), 0));
        QCOMPARE(writes.count, 1);
    }

    void nothingToDeleteIsNothing()
    {
        addChain(1);
        QCOMPARE(deleteMany(QStringList()), std::vector<Deletion>());
        QCOMPARE(names().size(), 1);
    }

    void missingDatumIsToldAndPassedOver()
    {
        addChain(3);
        const auto data = listed({datum(1), datum(2), datum(3)});
        Database::open(path)->connection().execute(u"DELETE FROM Main WHERE Name = '語2'"_s);
        world->dialogs.expect(NotFound);
        world->dialogs.meanwhile([&] {
            // The file is free while the box stands, and everything is deleted.
            QVERIFY(othersMayWrite(path));
            QCOMPARE(names(), QStringList());
        });
        QCOMPARE(deleteMany(data), std::vector<Deletion>({Deleted, Gone, Deleted}));
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList());
        QCOMPARE(TestWorld::rowsOf(session().RsCategory), QStringList());
    }

    void severalMissingDataAreToldInOneBoxWithTheirNumber()
    {
        addChain(4);
        const auto data = listed({datum(1), datum(2), datum(3)});
        Database::open(path)->connection().execute(u"DELETE FROM Main WHERE Name < '語4'"_s);
        world->dialogs.expect(severalNotFound(3));
        QCOMPARE(deleteMany(data), std::vector<Deletion>(3, Gone));
        QCOMPARE(TestWorld::rowsOf(session().RsCategory), QStringList(u"A|M-991231-004"_s));
    }

    void datumThatBearsAnotherNameByNowStaysWithItsRelations()
    {
        addChain(3);
        const auto data = listed({datum(1), datum(2)});
        Database::open(path)->connection().execute(u"UPDATE Main SET Name = '別' WHERE Name = '語1'"_s);
        world->dialogs.expect(NotFound);
        QCOMPARE(deleteMany(data), std::vector<Deletion>({Gone, Deleted}));
        QCOMPARE(names(), QStringList({u"別"_s, u"語3"_s}));
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList(u"M-991231-003|M-991231-004"_s));
        QCOMPARE(TestWorld::rowsOf(session().RsCategory),
                 QStringList({u"A|M-991231-001"_s, u"A|M-991231-003"_s}));
    }

    void datumNamedTwiceIsMissingTheSecondTime()
    {
        addChain(1);
        world->dialogs.expect(NotFound);
        QCOMPARE(deleteMany({datum(1), datum(1)}), std::vector<Deletion>({Deleted, Gone}));
    }

    void unknownKindIsReportedAndPassedOver()
    {
        addChain(1);
        TestWorld::addRow(session().RsLink, {u"X-991231-001"_s, datum(7)});
        world->dialogs.expect(failureBox(u"DeleteData"_s, 91));
        QCOMPARE(deleteMany({u"X-991231-001"_s, datum(1)}), std::vector<Deletion>({Kept, Deleted}));
        QCOMPARE(TestWorld::rowsOf(session().RsLink), QStringList(u"X-991231-001|M-991231-007"_s));
    }

    void refusedDatumKeepsItsRelations()
    {
        addChain(3);
        refuseDeletion(database(), u"Main"_s, u"OLD.Name = '語3'"_s);
        world->dialogs.expect(failureBox(u"DeleteData"_s, 5));
        QCOMPARE(deleteMany({datum(1), datum(3)}), std::vector<Deletion>({Deleted, Kept}));
        QCOMPARE(names(), QStringList({u"語2"_s, u"語3"_s}));
        QCOMPARE(TestWorld::rowsOf(session().RsLink),
                 QStringList({u"M-991231-002|M-991231-003"_s, u"M-991231-003|M-991231-004"_s}));
        QCOMPARE(TestWorld::rowsOf(session().RsCategory),
                 QStringList({u"A|M-991231-002"_s, u"A|M-991231-003"_s}));
    }

    void refusedRelationKeepsItsWholeDatumAndNoOther_data()
    {
        QTest::addColumn<QString>("table");
        QTest::newRow("link") << u"Link"_s;
        QTest::newRow("membership") << u"Category"_s;
    }

    void refusedRelationKeepsItsWholeDatumAndNoOther()
    {
        QFETCH(QString, table);
        addChain(3);
        refuseDeletion(database(), table, u"OLD.Object_ID = 'M-991231-003'"_s);
        world->dialogs.expect(failureBox(u"DeleteData"_s, 5));
        world->dialogs.meanwhile([&] { QVERIFY(othersMayWrite(path)); });
        QCOMPARE(deleteMany({datum(3), datum(1)}), std::vector<Deletion>({Kept, Deleted}));
        QCOMPARE(names(), QStringList({u"語2"_s, u"語3"_s}));
        QCOMPARE(TestWorld::rowsOf(session().RsLink),
                 QStringList({u"M-991231-002|M-991231-003"_s, u"M-991231-003|M-991231-004"_s}));
        QCOMPARE(TestWorld::rowsOf(session().RsCategory),
                 QStringList({u"A|M-991231-002"_s, u"A|M-991231-003"_s}));
    }

    void failureThatUndoesEverythingIsReportedOnce_data()
    {
        QTest::addColumn<QString>("table");
        QTest::newRow("row") << u"Main"_s;
        QTest::newRow("link") << u"Link"_s;
        QTest::newRow("membership") << u"Category"_s;
    }

    void failureThatUndoesEverythingIsReportedOnce()
    {
        QFETCH(QString, table);
        addChain(3);
        const QStringList before = contentOf(session());
        refuseDeletion(database(), table, u"OLD.Object_ID = 'M-991231-002'"_s, Refusal::OfTheTransaction);
        // Boxes about what was undone would only confuse.
        world->dialogs.expect(failureBox(u"DeleteData"_s, 5));
        QCOMPARE(DeleteManyData(session(), listed({datum(9), datum(1), datum(2), datum(3)}), [] {}),
                 std::vector<Deletion>(4, Kept));
        QCOMPARE(contentOf(session()), before);
        QVERIFY(!database().connection().inTransaction());
        allowDeletion(database(), table);
        QCOMPARE(deleteMany({datum(1), datum(2), datum(3)}), std::vector<Deletion>(3, Deleted));
    }

    void lockedFileIsReportedOnceAndKeepsEverything_data()
    {
        QTest::addColumn<ForeignLock::Kind>("kind");
        QTest::newRow("written elsewhere") << ForeignLock::Kind::Writing;
        QTest::newRow("read elsewhere") << ForeignLock::Kind::Reading;
    }

    void lockedFileIsReportedOnceAndKeepsEverything()
    {
        QFETCH(ForeignLock::Kind, kind);
        addChain(3);
        const QStringList before = contentOf(session());
        {
            const ForeignLock lock(database(), kind);
            world->dialogs.expect(failureBox(u"DeleteData"_s, errors::Locked));
            const auto data = listed({datum(1), datum(2)});
            QCOMPARE(DeleteManyData(session(), data, [] {}), std::vector<Deletion>(2, Kept));
        }
        QCOMPARE(contentOf(session()), before);
        QCOMPARE(deleteMany({datum(1), datum(2)}), std::vector<Deletion>(2, Deleted));
    }

    /// Whatever is in the database and whatever is asked for: many at once end like one after the other.
    void manyAtOnceEndLikeOneAfterTheOther_data()
    {
        QTest::addColumn<unsigned>("seed");
        for (unsigned seed = 1; seed <= 40; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }

    void manyAtOnceEndLikeOneAfterTheOther()
    {
        QFETCH(unsigned, seed);
        TestWorld other;
        other.openDatabase(other.createDatabase());
        std::mt19937 random(seed);
        const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
        // Some of these are no kinds, one cannot stand in a criteria text, and not every one gets a row.
        const QStringList pool = {
            datum(1),          datum(2),          datum(3), u"R-991231-001"_s, u"R-991231-002"_s,
            u"F-991231-001"_s, u"X-991231-001"_s, u"M'"_s,  u"m-991231-001"_s, u"R"_s};
        const auto any = [&] { return pool[below(static_cast<unsigned>(pool.size()))]; };
        const auto addToBoth = [&](std::shared_ptr<RecordSet> Session::*table, const QStringList& fields) {
            const auto add = [&](TestWorld& target) {
                return errorOf([&] { TestWorld::addRow(target.session.*table, fields); });
            };
            const qint32 first = add(*world); // 3022 for a pair that is there already
            QCOMPARE(add(other), first);
        };
        sqlite::Transaction filling(database().connection());
        sqlite::Transaction fillingOther(other.session.OpenDb->connection());
        for (const QString& identifier : pool) {
            if (below(4) == 0)
                continue;
            if (identifier.startsWith(u'R'))
                addToBoth(&Session::RsRefDoc, {u"本"_s, identifier, u""_s});
            else if (identifier.startsWith(u'F'))
                addToBoth(&Session::RsRefFile, {u"紙"_s, identifier, u""_s});
            else
                addToBoth(&Session::RsMain, {u"語"_s, identifier, u""_s});
        }
        for (int i = below(30); i > 0; --i)
            addToBoth(&Session::RsLink, {any(), any()});
        for (int i = below(15); i > 0; --i)
            addToBoth(&Session::RsCategory, {below(2) == 0 ? u"A"_s : u"A-B"_s, any()});
        filling.commit();
        fillingOther.commit();
        QStringList doomed;
        for (int i = below(8); i >= 0; --i)
            doomed << any();

        const std::vector<Deletion> together = deleteMany(doomed);
        std::vector<Deletion> single;
        for (const QString& identifier : doomed)
            single.push_back(DeleteDatum(other.session, identifier, 0));

        QCOMPARE(together, single);
        QCOMPARE(contentOf(session()), contentOf(other.session));
        // Nothing was scripted, so every box became a complaint; one tells of all that are gone.
        const auto isAboutGone = [](const QString& complaint) { return complaint.contains(NotFound.text); };
        QStringList boxes = world->dialogs.takeComplaints();
        QStringList singleBoxes = other.dialogs.takeComplaints();
        const bool anyGone = std::count(single.begin(), single.end(), Gone) > 0;
        QCOMPARE(boxes.removeIf(isAboutGone), anyGone ? 1 : 0);
        QCOMPARE(singleBoxes.removeIf(isAboutGone), std::count(single.begin(), single.end(), Gone));
        QCOMPARE(boxes, singleBoxes);
        QCOMPARE(world->eventLog.lines, other.eventLog.lines);
    }
};

QTEST_GUILESS_MAIN(TestDeletionOfMany)
#include "test_deletion_of_many.moc"
