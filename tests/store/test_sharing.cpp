#include "app/base/error.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <cstdio>
#include <memory>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

class TestSharing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<TestWorld>();
        m_path = m_world->createDatabase();
        m_world->openDatabase(m_path);
    }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void twoProgramsSeeEachOthersRows()
    {
        const auto other = RecordSet::openTable(Database::open(m_path), schema::Main());
        TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M-991231-001"_s, u""_s});
        QCOMPARE(TestWorld::rowsOf(other), QStringList(u"a|M-991231-001|"_s));
        TestWorld::addRow(other, {u"b"_s, u"M-991231-002"_s, u""_s});
        QCOMPARE(m_world->session.RsMain->recordCount(), 2);
    }

    void theNumberOfForeignWritesIsVisible()
    {
        sqlite::Connection& mine = m_world->session.OpenDb->connection();
        const qint64 before = mine.dataVersion();
        TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M-991231-001"_s, u""_s});
        QCOMPARE(mine.dataVersion(), before);
        const auto other = RecordSet::openTable(Database::open(m_path), schema::Main());
        TestWorld::addRow(other, {u"b"_s, u"M-991231-002"_s, u""_s});
        QVERIFY(mine.dataVersion() != before);
    }

    void aFilteredSetPassesOverRowsDeletedElsewhere()
    {
        for (const QString& number : {u"1"_s, u"2"_s, u"3"_s})
            TestWorld::addRow(m_world->session.RsMain, {u"a"_s + number, u"M-991231-00"_s + number, u""_s});
        const auto some = m_world->session.RsMain->filtered(u"Name Like 'a*'"_s);
        const auto other = RecordSet::openTable(Database::open(m_path), schema::Main());
        other->findFirst(u"Name = 'a2'"_s);
        other->deleteRow();
        QCOMPARE(some->recordCount(), 2);
        some->moveFirst();
        some->moveNext();
        QCOMPARE(some->field(0), u"a3"_s);
    }

    void aRowDeletedElsewhereIsNeverTakenForANewOne()
    {
        for (const QString& number : {u"1"_s, u"2"_s})
            TestWorld::addRow(m_world->session.RsMain, {u"a"_s + number, u"M-991231-00"_s + number, u""_s});
        const auto rows = m_world->session.RsMain;
        rows->moveLast();
        const auto other = RecordSet::openTable(Database::open(m_path), schema::Main());
        other->moveLast();
        other->deleteRow();
        const auto third = RecordSet::openTable(m_world->session.OpenDb, schema::Main());
        TestWorld::addRow(third, {u"new"_s, u"M-991231-003"_s, u""_s});
        QCOMPARE(errorOf([&] { rows->field(0); }), errors::RecordDeleted);
    }

    void aRowOfAnotherProgramThatGoesUnderTheCursorIsNeverTakenForANewOne()
    {
        const auto other = RecordSet::openTable(Database::open(m_path), schema::Main());
        for (const QString& number : {u"1"_s, u"2"_s})
            TestWorld::addRow(other, {u"a"_s + number, u"M-991231-00"_s + number, u""_s});
        const auto rows = m_world->session.RsMain;
        rows->moveLast();
        other->moveLast();
        other->deleteRow();
        TestWorld::addRow(RecordSet::openTable(m_world->session.OpenDb, schema::Main()),
                          {u"new"_s, u"M-991231-003"_s, u""_s});
        QCOMPARE(errorOf([&] { rows->field(0); }), errors::RecordDeleted);
    }

    void theGreatestRowIsRememberedWhateverIsLookedAtAfterwards()
    {
        const auto other = RecordSet::openTable(Database::open(m_path), schema::Main());
        for (const QString& number : {u"1"_s, u"2"_s})
            TestWorld::addRow(other, {u"a"_s + number, u"M-991231-00"_s + number, u""_s});
        const auto last = m_world->session.RsMain;
        last->moveLast();
        const auto first = RecordSet::openTable(m_world->session.OpenDb, schema::Main());
        first->moveFirst();
        other->moveLast();
        other->deleteRow();
        TestWorld::addRow(first, {u"new"_s, u"M-991231-003"_s, u""_s});
        QCOMPARE(errorOf([&] { last->field(0); }), errors::RecordDeleted);
    }

    void noNumberIsGivenOutAgainThatWasThereAtTheOpening()
    {
        for (const QString& number : {u"1"_s, u"2"_s})
            TestWorld::addRow(m_world->session.RsMain, {u"a"_s + number, u"M-991231-00"_s + number, u""_s});
        const auto shown = m_world->session.RsMain;
        shown->moveLast(); // in a window
        const auto other = RecordSet::openTable(Database::open(m_path), schema::Main());
        const auto deleting = RecordSet::openTable(m_world->session.OpenDb, schema::Main());
        deleting->moveLast();
        deleting->deleteRow();
        TestWorld::addRow(other, {u"new"_s, u"M-991231-002"_s, u""_s});
        QCOMPARE(errorOf([&] { shown->field(0); }), errors::RecordDeleted);
    }

    void noNumberIsGivenOutAgainThatAPassHasMet()
    {
        const auto other = RecordSet::openTable(Database::open(m_path), schema::Main());
        TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M-991231-001"_s, u""_s});
        const auto shown = m_world->session.RsMain;
        shown->moveLast();
        other->forEachRow({0}, [](const RecordSet::Row&) {}); // fills a list
        RecordSet::openTable(m_world->session.OpenDb, schema::Main())->deleteEveryRow();
        TestWorld::addRow(other, {u"new"_s, u"M-991231-001"_s, u""_s});
        QCOMPARE(errorOf([&] { shown->field(0); }), errors::RecordDeleted);
    }

    void programThatHasMetNoRowsGivesNoNumberOutAgain_data()
    {
        QTest::addColumn<bool>("runsAlready");
        QTest::newRow("freshly started") << false;
        QTest::newRow("has registered something before") << true;
    }

    void programThatHasMetNoRowsGivesNoNumberOutAgain()
    {
        QFETCH(bool, runsAlready);
        const auto others = [this] { return RecordSet::openTable(Database::open(m_path), schema::Main()); };
        std::shared_ptr<RecordSet> registering;
        if (runsAlready) {
            registering = others();
            TestWorld::addRow(registering, {u"a"_s, u"M-991231-001"_s, u""_s});
        }
        TestWorld::addRow(m_world->session.RsMain, {u"b"_s, u"M-991231-002"_s, u""_s});
        const auto shown = m_world->session.RsMain;
        shown->moveLast(); // in a window
        const auto deleting = others();
        deleting->moveLast();
        deleting->deleteRow();
        if (!registering)
            registering = others();
        TestWorld::addRow(registering, {u"new"_s, u"M-991231-002"_s, u""_s});
        QCOMPARE(errorOf([&] { shown->field(0); }), errors::RecordDeleted);
        TestWorld::addRow(registering, {u"last"_s, u"M-991231-003"_s, u""_s});
        QCOMPARE(TestWorld::rowsOf(shown).last(), u"last|M-991231-003|"_s); // in the order of registering
    }

    void numbersAreLeftOutOnlyWhereOthersHaveWritten()
    {
        const auto mine = m_world->session.RsMain;
        const auto numberOf = [&](const QString& name) {
            TestWorld::addRow(mine, {name, u"M-991231-"_s + name, u""_s});
            mine->moveLast();
            return mine->rowNumber();
        };
        const qint64 first = numberOf(u"001"_s);
        QCOMPARE(numberOf(u"002"_s), first + 1);
        QCOMPARE(numberOf(u"003"_s), first + 2);
        TestWorld::addRow(RecordSet::openTable(Database::open(m_path), schema::RefDoc()),
                          {u"本"_s, u"R-991231-001"_s, u""_s});
        QVERIFY(numberOf(u"004"_s) > first + 3);
    }

    void noLockIsHeldBetweenCalls()
    {
        TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M-991231-001"_s, u""_s});
        TestWorld::addRow(m_world->session.RsMain, {u"b"_s, u"M-991231-002"_s, u""_s});
        const auto rows = m_world->session.RsMain;
        const auto other = Database::open(m_path);
        const auto isFree = [&] {
            return errorOf([&] {
                       other->connection().execute(u"BEGIN EXCLUSIVE"_s);
                       other->connection().execute(u"ROLLBACK"_s);
                   }) == 0;
        };
        QVERIFY(isFree());
        rows->moveFirst();
        QVERIFY(isFree());
        rows->field(0);
        QVERIFY(isFree());
        rows->findFirst(u"Name Like '*'"_s);
        QVERIFY(isFree());
        const auto some = rows->filtered(u"Name Like '*'"_s);
        some->moveFirst();
        QVERIFY(isFree());
        rows->forEachRow({0}, [](const RecordSet::Row&) { return false; });
        QVERIFY(isFree());
        rows->edit();
        rows->setField(0, u"c"_s);
        QVERIFY(isFree());
        rows->update();
        QVERIFY(isFree());
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(rows, {u"x"_s, u"M-991231-001"_s, u""_s});
                 }),
                 errors::DuplicateKey);
        QVERIFY(isFree());
        rows->moveNext();
        rows->deleteRow();
        QVERIFY(isFree());
    }

    void theSecondWriterIsTurnedAway()
    {
        const auto other = Database::open(m_path);
        const auto theirs = RecordSet::openTable(other, schema::Main());
        const auto mine = m_world->session.RsMain;
        TestWorld::addRow(mine, {u"a"_s, u"M-991231-001"_s, u""_s});
        mine->moveFirst();
        waitForNoLock(*m_world->session.OpenDb); // the other will not be done in time anyhow
        {
            sqlite::Transaction writing(other->connection());
            TestWorld::addRow(theirs, {u"b"_s, u"M-991231-002"_s, u""_s});
            QCOMPARE(errorOf([&] {
                         TestWorld::addRow(mine, {u"c"_s, u"M-991231-003"_s, u""_s});
                     }),
                     errors::Locked);
            QCOMPARE(errorOf([&] { mine->deleteRow(); }), errors::Locked);
            // A reader is not kept waiting by a writer who has not finished.
            QCOMPARE(mine->field(0), u"a"_s);
            QCOMPARE(mine->recordCount(), 1);
            writing.commit();
        }
        TestWorld::addRow(mine, {u"c"_s, u"M-991231-003"_s, u""_s});
        QCOMPARE(mine->recordCount(), 3);
    }

    void whatCannotBeFinishedBecauseOfAReaderIsUndone()
    {
        const auto mine = m_world->session.RsMain;
        TestWorld::addRow(mine, {u"a"_s, u"M-991231-001"_s, u""_s});
        sqlite::Connection& connection = m_world->session.OpenDb->connection();
        waitForNoLock(*m_world->session.OpenDb); // the reader will not be done in time anyhow
        const auto other = Database::open(m_path);
        const auto theirs = RecordSet::openTable(other, schema::Main());
        other->connection().execute(u"BEGIN"_s);
        QCOMPARE(theirs->recordCount(), 1); // the reader has begun
        {
            sqlite::Transaction writing(connection);
            TestWorld::addRow(mine, {u"b"_s, u"M-991231-002"_s, u""_s});
            QCOMPARE(errorOf([&] { writing.commit(); }), errors::Locked);
        }
        QVERIFY(!connection.inTransaction());
        QCOMPARE(TestWorld::rowsOf(mine), QStringList(u"a|M-991231-001|"_s));
        // A row by itself is a transaction of its own.
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(mine, {u"c"_s, u"M-991231-003"_s, u""_s});
                 }),
                 errors::Locked);
        QVERIFY(!connection.inTransaction());
        QCOMPARE(theirs->recordCount(), 1);
        other->connection().execute(u"COMMIT"_s);
        QCOMPARE(TestWorld::rowsOf(theirs), QStringList(u"a|M-991231-001|"_s));
        TestWorld::addRow(mine, {u"d"_s, u"M-991231-004"_s, u""_s});
        QCOMPARE(TestWorld::rowsOf(theirs), QStringList({u"a|M-991231-001|"_s, u"d|M-991231-004|"_s}));
    }

    void aLockedFileCannotBeReadOrOpened()
    {
        const auto other = Database::open(m_path);
        other->connection().execute(u"BEGIN EXCLUSIVE"_s);
        waitForNoLock(*m_world->session.OpenDb);
        QCOMPARE(errorOf([&] { m_world->session.RsMain->recordCount(); }), errors::Locked);
        m_world->dialogs.expect({.text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\n"
                                         u"EXPLANATION : "_s +
                                         standardDescription(errors::Locked),
                                 .title = u"Quillon 障害対策部"_s});
        QVERIFY(!OpenDbFile(m_world->session, m_path));
        other->connection().execute(u"ROLLBACK"_s);
        QCOMPARE(m_world->session.RsMain->recordCount(), 0);
        QVERIFY(OpenDbFile(m_world->session, m_path));
    }

    void anotherProcessHoldingTheFileIsRespected()
    {
        QProcess holder;
        startHelper(holder, u"hold"_s);
        QCOMPARE(errorOf([&] { Database::open(m_path); }), errors::Locked);
        waitForNoLock(*m_world->session.OpenDb);
        QCOMPARE(errorOf([&] {
                     TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M"_s, u""_s});
                 }),
                 errors::Locked);
        finish(holder);
        TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M"_s, u""_s});
        QCOMPARE(m_world->session.RsMain->recordCount(), 1);
    }

    void whatAnotherProcessBeganAndNeverFinishedIsUndone()
    {
        TestWorld::addRow(m_world->session.RsMain, {u"a"_s, u"M-991231-001"_s, u""_s});
        QProcess writer;
        startHelper(writer, u"spill"_s);
        writer.kill();
        QVERIFY(writer.waitForFinished());
        // The writer had already written into the file itself; its journal takes that back.
        QVERIFY(QFile::exists(m_path + u"-journal"_s));
        m_world->openDatabase(m_path);
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList(u"a|M-991231-001|"_s));
        QCOMPARE(m_world->session.RsRefDoc->recordCount(), 0);
    }

    void everySavedRowSurvivesASuddenEnd()
    {
        QProcess writer;
        startHelper(writer, u"save"_s);
        writer.kill();
        QVERIFY(writer.waitForFinished());
        m_world->openDatabase(m_path);
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList(u"saved|M-991231-001|"_s));
    }

private:
    /// Starts this program as another one with the same file; returns when it has done what it is for.
    void startHelper(QProcess& process, const QString& mode)
    {
        process.start(QCoreApplication::applicationFilePath(), {u"--helper"_s, mode, m_path});
        QVERIFY(process.waitForStarted());
        while (!process.canReadLine())
            QVERIFY(process.waitForReadyRead(60000));
        QCOMPARE(process.readLine().trimmed(), QByteArray("ready"));
    }

    static void finish(QProcess& process)
    {
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitCode(), 0);
    }

    std::unique_ptr<TestWorld> m_world;
    QString m_path;
};

namespace
{

/// The life of the other program: does one thing to the file, says so, and waits until its input is closed.
int runHelper(const QString& mode, const QString& path)
{
    const auto database = Database::open(path);
    if (mode == u"hold") {
        database->connection().execute(u"BEGIN EXCLUSIVE"_s);
    } else if (mode == u"spill") {
        // So small a cache cannot hold the transaction, which therefore reaches the file before it is finished.
        database->connection().execute(u"PRAGMA cache_size = 5"_s);
        database->connection().execute(u"BEGIN EXCLUSIVE"_s);
        const auto rows = RecordSet::openTable(database, schema::RefDoc());
        for (int i = 100; i < 200; ++i)
            TestWorld::addRow(rows, {u"x"_s, u"R-991231-"_s + QString::number(i), QString(5000, u'水')});
        database->connection().execute(u"DELETE FROM Main"_s);
    } else {
        const auto rows = RecordSet::openTable(database, schema::Main());
        TestWorld::addRow(rows, {u"saved"_s, u"M-991231-001"_s, u""_s});
    }
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() >= 0) {
    }
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == u"--helper")
        return runHelper(arguments[2], arguments[3]);
    TestSharing test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_sharing.moc"
