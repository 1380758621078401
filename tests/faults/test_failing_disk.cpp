// Every call to the disk fails once, in every way it can, during every operation: the operation tells it or is done all
// the same, the file is whole and holds all of it or nothing, and the program goes on with what the file holds.
#include "app/base/error.h"
#include "app/base/titles.h"
#include "store/database.h"
#include "store/kept/history.h"
#include "tests/faults/fault_world.h"
#include "tests/faults/faulty_disk.h"

#include <QFile>
#include <QTest>

#include <sqlite3.h>

#include <array>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

using Outcome = FaultWorld::Outcome;

class TestFailingDisk : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_prepared; // what a test begins with
    QTemporaryDir m_folder;   // where it works
    Model m_model;
    int m_failures = 0; // calls that failed in all

    static bool isLong() { return numberFromEnvironment("QUILLON_FAULTS_LONG", 0) != 0; }
    static FaultyDisk& disk() { return FaultyDisk::instance(); }

    static void addFailures()
    {
        QTest::addColumn<int>("failure");
        QTest::addColumn<bool>("stays");
        const std::array names{"broken", "full", "short write", "done and broken", "quota", "interrupted"};
        for (int failure = 0; failure < static_cast<int>(DiskFailure::Count); ++failure) {
            for (const bool stays : {false, true})
                QTest::addRow("%s %s", names.at(static_cast<std::size_t>(failure)),
                              stays ? "from then on" : "once")
                    << failure << stays;
        }
    }

    /// Puts a file there as it was prepared, and nothing beside it.
    void put(const QString& name) const
    {
        for (const QString& ending : {u""_s, u"-journal"_s}) {
            QFile::remove(m_folder.filePath(name + ending));
            if (QFile::exists(m_prepared.filePath(name + ending)))
                QFile::copy(m_prepared.filePath(name + ending), m_folder.filePath(name + ending));
        }
    }

    struct Attempt {
        Outcome outcome = Outcome::Done;
        bool isOver = false; // there was no call of this number any more
        bool hasFailed = false;
        DiskFailure failure = DiskFailure::Broken;
    };
    /// Performs something while the n-th call fails.
    template <class Operation> Attempt attempt(int n, Operation&& operation)
    {
        QFETCH(const int, failure);
        QFETCH(const bool, stays);
        disk().failAt(n, static_cast<DiskFailure>(failure),
                      stays ? FaultyDisk::Duration::FromThenOn : FaultyDisk::Duration::Once);
        Attempt result{.failure = static_cast<DiskFailure>(failure)};
        result.outcome = std::forward<Operation>(operation)();
        result.isOver = disk().heal() < n;
        result.hasFailed = disk().hasFailed();
        if (result.hasFailed)
            ++m_failures;
        return result;
    }
    /// The numbers of calls to be tried: every one in a long run, else every few.
    static int next(int n) { return n + (isLong() ? 1 : 1 + static_cast<int>(s_random() % 40)); }
    static int first() { return isLong() ? 1 : 1 + static_cast<int>(s_random() % 12); }

    static QString told(const FaultWorld& world)
    {
        return u" (told: "_s + world.told().join(u" / "_s) + u')';
    }

    /// What is wrong after an attempt; empty for nothing.
    static QString problem(FaultWorld& world, const Step& step, const Model& before, const Attempt& attempt)
    {
        if (attempt.outcome == Outcome::Silent)
            return u"it was not done, and nobody was told"_s;
        if (!attempt.hasFailed && attempt.outcome != Outcome::Done)
            return u"it failed although no call did"_s + told(world);
        if (attempt.failure == DiskFailure::Quota && attempt.outcome == Outcome::Failed &&
            !world.told().join(QString()).contains(u"ディスク容量の上限"_s))
            return u"the quota is not told"_s + told(world);
        Model seen;
        try {
            seen = world.seen();
        } catch (const Error& error) {
            return u"the program cannot read its file any more: "_s + error.description;
        }
        QString why;
        const auto actual = readModel(world.path(u"QUILLON.mdb"_s), why);
        if (!actual)
            return u"the file is not whole: "_s + why;
        if (const QString text = difference(seen, *actual); !text.isEmpty())
            return u"the program takes something else for the content of the file: "_s + text;
        if (!world.isOfOnePiece())
            return u"the record sets do not stand on the open database"_s;
        if (attempt.outcome == Outcome::Done) {
            if (const QString text = difference(*actual, after(step, before)); !text.isEmpty())
                return u"it was reported as done: "_s + text;
        } else {
            if (!isPossibleAfterFailure(step, before, *actual))
                return u"a part of it is in the file: "_s + difference(*actual, before) + told(world);
        }
        if (const QString text = filesProblem(world.folder, *actual); !text.isEmpty())
            return text;
        // The program goes on.
        const auto following = randomStep(Step::Kind::Register, s_random, *actual, {});
        if (world.perform(*following) != Outcome::Done)
            return u"nothing can be written afterwards"_s + told(world);
        world.close();
        const auto last = readModel(world.path(u"QUILLON.mdb"_s), why);
        if (!last)
            return u"the file is not whole afterwards: "_s + why;
        return difference(*last, after(*following, *actual));
    }

    static inline std::mt19937 s_random;

private Q_SLOTS:
    void initTestCase()
    {
        disk();
        s_random.seed(seedOfRun());
        m_model = prepareFolder(m_prepared.path());
        prepareFolder(m_folder.path());
        QFile::copy(m_prepared.filePath(u"QUILLON.mdb"_s), m_prepared.filePath(u"OTHER.mdb"_s));
        makeBrokenOff(m_prepared.filePath(u"BROKEN.mdb"_s));
        makeOld(m_prepared.filePath(u"OLD.mdb"_s));
    }

    void cleanupTestCase() { qInfo("%d calls failed", m_failures); }

    void everyStepIsDoneOrTold_data() { addFailures(); }
    void everyStepIsDoneOrTold()
    {
        for (int kind = 0; kind < static_cast<int>(Step::Kind::Count); ++kind) {
            const auto step = randomStep(static_cast<Step::Kind>(kind), s_random, m_model, {});
            if (!step)
                continue; // such as a link between two data that have one
            if (!isLong() && s_random() % 3 != 0)
                continue; // one of three is enough for every day
            for (int n = first();; n = next(n)) {
                put(u"QUILLON.mdb"_s);
                FaultWorld world(m_folder.path());
                QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
                const Attempt result = attempt(n, [&] { return world.perform(*step); });
                const QString wrong = problem(world, *step, m_model, result);
                QVERIFY2(wrong.isEmpty(),
                         qPrintable(u"%1, call %2 (a call of kind %3): %4"_s.arg(step->described())
                                        .arg(n)
                                        .arg(static_cast<int>(disk().failedCall()))
                                        .arg(wrong)));
                if (result.isOver)
                    break;
            }
        }
    }

    void theFileThatStandsIsThatOfTheRowThatStands()
    {
        // What has been done is told as failed: the row may stand although the registration says otherwise.
        const QString name = u"共通.txt"_s;
        const auto contentOf = [&] {
            QFile file(m_folder.filePath(titles::FileFolder + u'/' + name));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        const auto offer = [&](const QByteArray& content) {
            QFile file(m_folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
        };
        Step step{.kind = Step::Kind::RegisterFile,
                  .identifier = u"F-001231-001"_s,
                  .other = {},
                  .name = name,
                  .content = u"未入力"_s,
                  .many = {}};
        int standing = 0;
        for (int n = 1;; ++n) {
            put(u"QUILLON.mdb"_s);
            FaultWorld world(m_folder.path());
            QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
            offer("former");
            step.identifier = u"F-001231-001"_s;
            QCOMPARE(world.perform(step), Outcome::Done);
            const Model before = after(step, m_model);
            offer("fresh");
            step.identifier = u"F-001231-002"_s;
            disk().failAt(n, DiskFailure::DoneAndBroken, FaultyDisk::Duration::Once);
            const Outcome outcome = world.perform(step);
            const bool isOver = disk().heal() < n;
            world.close();
            QString why;
            const auto actual = readModel(world.path(u"QUILLON.mdb"_s), why);
            QVERIFY2(actual, qPrintable(why));
            const bool stands = *actual == after(step, before);
            standing += stands && outcome == Outcome::Failed ? 1 : 0;
            QVERIFY(stands || *actual == before);
            QCOMPARE(contentOf(), stands ? QByteArray("fresh") : QByteArray("former"));
            if (isOver)
                break;
        }
        QVERIFY2(standing > 0, "no write stood that was told as failed");
    }

    void whatARowWasIsKeptWhenItStandsAlthoughItFailed()
    {
        const auto step = randomStep(Step::Kind::Update, s_random, m_model, {});
        const auto eventsIn = [](const FaultWorld& world) {
            kept::History history(world.place());
            while (history.readOlder()) {
            }
            return history.events().size();
        };
        int standing = 0;
        int undone = 0;
        for (const DiskFailure failure : {DiskFailure::DoneAndBroken, DiskFailure::Broken}) {
            for (int n = 1;; ++n) {
                put(u"QUILLON.mdb"_s);
                FaultWorld world(m_folder.path());
                world.keep();
                QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
                const std::size_t before = eventsIn(world);
                disk().failAt(n, failure, FaultyDisk::Duration::Once);
                const Outcome outcome = world.perform(*step);
                const bool isOver = disk().heal() < n;
                QString why;
                const auto actual = readModel(world.path(u"QUILLON.mdb"_s), why);
                QVERIFY2(actual, qPrintable(why));
                const bool stands = *actual == after(*step, m_model);
                standing += stands && outcome == Outcome::Failed ? 1 : 0;
                undone += stands ? 0 : 1;
                QCOMPARE(eventsIn(world), before + (stands ? 1 : 0));
                if (isOver)
                    break;
            }
        }
        QVERIFY2(standing > 0 && undone > 0, "not both have happened");
    }

    void aFailingOpeningLeavesOneDatabaseOpen_data() { addFailures(); }
    void aFailingOpeningLeavesOneDatabaseOpen()
    {
        for (const QString& name : {u"OTHER.mdb"_s, u"BROKEN.mdb"_s, u"OLD.mdb"_s}) {
            for (int n = first();; n = next(n)) {
                put(u"QUILLON.mdb"_s);
                put(name);
                FaultWorld world(m_folder.path());
                QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
                const Attempt result = attempt(n, [&] { return world.open(name); });
                const QString about = u"%1, call %2 (a call of kind %3)%4"_s.arg(name)
                                          .arg(n)
                                          .arg(static_cast<int>(disk().failedCall()))
                                          .arg(told(world));
                QVERIFY2(result.outcome != Outcome::Silent, qPrintable(about));
                QVERIFY2(result.hasFailed || result.outcome == Outcome::Done, qPrintable(about));
                QVERIFY2(world.isOfOnePiece(), qPrintable(about));
                const bool isOther = world.session.OpenDb->path() == world.path(name);
                QVERIFY2(isOther || result.outcome != Outcome::Done, qPrintable(about));
                if (name != u"OLD.mdb"_s || !isOther)
                    QVERIFY2(difference(world.seen(), m_model).isEmpty(), qPrintable(about));
                QVERIFY2(world.open(name) == Outcome::Done, qPrintable(about + told(world)));
                if (name != u"OLD.mdb"_s)
                    QCOMPARE(difference(world.seen(), m_model), QString());
                world.close();
                QString why;
                const auto actual = readModel(world.path(name), why);
                QVERIFY2(actual, qPrintable(about + why));
                if (result.isOver)
                    break;
            }
        }
    }

    void aFailingCreationCanBeTriedAgain_data() { addFailures(); }
    void aFailingCreationCanBeTriedAgain()
    {
        for (int n = first();; n = next(n)) {
            put(u"QUILLON.mdb"_s);
            put(u"NEW.mdb"_s); // nothing
            FaultWorld world(m_folder.path());
            QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
            const Attempt result = attempt(n, [&] { return world.create(u"NEW.mdb"_s); });
            const QString about = u"call %1 (a call of kind %2)%3"_s.arg(n)
                                      .arg(static_cast<int>(disk().failedCall()))
                                      .arg(told(world));
            QVERIFY2(result.outcome != Outcome::Silent, qPrintable(about));
            QVERIFY2(result.hasFailed || result.outcome == Outcome::Done, qPrintable(about));
            QVERIFY2(world.isOfOnePiece(), qPrintable(about));
            if (world.open(u"NEW.mdb"_s) != Outcome::Done)
                QVERIFY2(world.create(u"NEW.mdb"_s) == Outcome::Done, qPrintable(about + told(world)));
            QCOMPARE(difference(world.seen(), Model()), QString());
            if (result.isOver)
                break;
        }
    }

private:
    static void execute(sqlite3* file, const QByteArray& sql)
    {
        char* message = nullptr;
        if (sqlite3_exec(file, sql.constData(), nullptr, nullptr, &message) != SQLITE_OK)
            qFatal("%s: %s", sql.constData(), message);
    }

    /// A database as the end of a program in the middle of a long write leaves it.
    void makeBrokenOff(const QString& path) const
    {
        const QString work = path + u".work"_s;
        QFile::copy(m_prepared.filePath(u"QUILLON.mdb"_s), work);
        sqlite3* file = nullptr;
        sqlite3_open_v2(work.toUtf8().constData(), &file, SQLITE_OPEN_READWRITE, "unix");
        // So small a cache cannot hold the transaction, which therefore reaches the file before it is finished.
        execute(file, "PRAGMA cache_size = 5");
        execute(file, "BEGIN");
        for (int i = 0; i < 40; ++i)
            execute(file, "INSERT INTO RefDoc (Name, Object_ID, Explanation) VALUES ('x', 'R-000000-" +
                              QByteArray::number(i) + "', '" + QByteArray(3000, 'x') + "')");
        execute(file, "DELETE FROM Link");
        for (const QString& ending : {u""_s, u"-journal"_s}) {
            if (!QFile::copy(work + ending, path + ending))
                qFatal("nothing was written before its time");
        }
        execute(file, "ROLLBACK");
        sqlite3_close(file);
        QFile::remove(work);
    }

    /// A database of the older layout.
    void makeOld(const QString& path) const
    {
        QFile::copy(m_prepared.filePath(u"QUILLON.mdb"_s), path);
        sqlite3* file = nullptr;
        sqlite3_open_v2(path.toUtf8().constData(), &file, SQLITE_OPEN_READWRITE, "unix");
        execute(file, "DROP TABLE Category");
        execute(file, "DROP TABLE Category_ID");
        sqlite3_close(file);
    }
};

QTEST_GUILESS_MAIN(TestFailingDisk)
#include "test_failing_disk.moc"
