#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "store/kept/copies.h"
#include "store/kept/copy_worker.h"
#include "store/kept/file_contents.h"
#include "store/kept/pruning.h"
#include "store/record_set.h"
#include "store/sqlite/backup.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <atomic>
#include <functional>
#include <memory>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;
using kept::Copy;
using kept::CopyOutcome;

/// The kept copies of a database.
class TestCopies : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;
    QString path;
    int minute = 0;
    mutable qint64 m_agings = 0;

    Session& session() { return world->session; }
    kept::Place place() const { return {world->folder.filePath(u"kept"_s), path}; }
    QString fileFolder() const { return world->folder.filePath(u"RefFile"_s); }
    /// As if the database had been written a while ago.
    void letTimePass() const
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QDateTime written = QFileInfo(path).lastModified();
        QVERIFY(file.setFileTime(written.addSecs(-++m_agings * 10), QFileDevice::FileModificationTime));
    }
    CopyOutcome make(
        const std::function<bool()>& goesOn = [] { return true; }, int mostBeginnings = 50,
        const std::function<bool(const QString&)>& isAtHand = platform::isAtHand)
    {
        // Every copy has a time of its own.
        const auto now = [minute = ++minute] { return QDateTime(QDate(2026, 1, 31), QTime(12, minute)); };
        return kept::makeCopy({.place = place(),
                               .fileFolder = fileFolder(),
                               .now = now,
                               .goesOn = goesOn,
                               .mostBeginnings = mostBeginnings,
                               .isAtHand = isAtHand});
    }
    CopyOutcome makeWithNothingAtHand()
    {
        return make([] { return true; }, 50, [](const QString&) { return false; });
    }
    std::vector<Copy> copies() const { return kept::listCopies(place()); }
    QStringList filesIn(const QString& folder) const
    {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    void addItem(int number)
    {
        TestWorld::addRow(session().RsMain,
                          {u"項目"_s, u"M-991231-%1"_s.arg(number, 3, 10, QChar(u'0')), u"文"_s});
    }
    void registerFile(const QString& name, const QByteArray& content)
    {
        QDir().mkpath(fileFolder());
        QFile file(fileFolder() + u'/' + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        TestWorld::addRow(session().RsRefFile,
                          {name, u"F-991231-%1"_s.arg(session().RsRefFile->recordCount() + 1), u"未入力"_s});
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        path = world->createDatabase();
        world->openDatabase(path);
        for (int i = 1; i <= 10; ++i)
            addItem(i);
        minute = 0;
    }
    void cleanup() { world.reset(); }

    void aCopyIsTheDatabaseAsItIs()
    {
        QCOMPARE(make(), CopyOutcome::Made);
        QCOMPARE(copies().size(), std::size_t{1});
        const Copy copy = copies()[0];
        QCOMPARE(QFileInfo(copy.path).fileName(), u"2026-01-31_120100.mdb"_s);
        QCOMPARE(copy.rows, 10);
        QCOMPARE(copy.counts.value(u"Main"_s), 10);
        QVERIFY(kept::isUnharmed(copy));
        const auto database = Database::open(copy.path);
        QCOMPARE(TestWorld::rowsOf(RecordSet::openTable(database, schema::Main())),
                 TestWorld::rowsOf(session().RsMain));
    }

#ifdef Q_OS_LINUX
    void aStepGetsItsTurnLikeWhoeverWaitsForItAndTheCheckDoesNot()
    {
        const auto priority = [] {
            return getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
        };
        QList<int> priorities; // in the order of the work
        QCOMPARE(make([&] {
                     priorities << priority();
                     return true;
                 }),
                 CopyOutcome::Made);
        QCOMPARE(priorities.first(), priority());
        constexpr int Least = 19;
        QVERIFY(priorities.contains(Least));
    }
#endif

    void whileNothingChangesNoFurtherCopyIsMade()
    {
        letTimePass();
        QCOMPARE(make(), CopyOutcome::Made);
        QCOMPARE(make(), CopyOutcome::Unchanged);
        addItem(11);
        QCOMPARE(make(), CopyOutcome::Made);
        QCOMPARE(copies().size(), std::size_t{2});
    }

    void aDatabaseWrittenAtTheVeryMomentIsCopiedOnceMore()
    {
        // A write that leaves the same time behind could not be told otherwise.
        QCOMPARE(make(), CopyOutcome::Made);
        QCOMPARE(make(), CopyOutcome::Made);
        letTimePass();
        QCOMPARE(make(), CopyOutcome::Made);
        QCOMPARE(make(), CopyOutcome::Unchanged);
    }

    void theNewestStandsFirst()
    {
        make();
        addItem(11);
        make();
        QVERIFY(copies()[0].time > copies()[1].time);
        QCOMPARE(copies()[0].rows, 11);
    }

    void aCopyThatIsEndedLeavesNothing_data()
    {
        QTest::addColumn<int>("after");
        QTest::newRow("at once") << 0;
        QTest::newRow("in the middle") << 1;
        QTest::newRow("at the end") << 2;
    }
    void aCopyThatIsEndedLeavesNothing()
    {
        QFETCH(int, after);
        int asked = 0;
        QCOMPARE(make([&] { return ++asked <= after; }), CopyOutcome::Stopped);
        QCOMPARE(filesIn(place().copies()), QStringList());
    }

    void aCopyWithHalfOfTheRowsIsNotDoubtedAndOneWithLessIs()
    {
        make();
        for (int i = 0; i < 5; ++i) {
            session().RsMain->moveFirst();
            session().RsMain->deleteRow();
        }
        make();
        QVERIFY(!copies()[0].isDoubtful);
        for (int i = 0; i < 3; ++i) {
            session().RsMain->moveFirst();
            session().RsMain->deleteRow();
        }
        make();
        QCOMPARE(copies()[0].rows, 2);
        QVERIFY(copies()[0].isDoubtful);
    }

    void aCopyIsComparedWithTheNewestGoodOne()
    {
        make();
        session().OpenDb->connection().execute(u"DELETE FROM Main"_s);
        // However many there are of those that hold too little: the second does not pass for good beside the first.
        for (int i = 1; i <= 6; ++i) {
            TestWorld::addRow(session().RsOpenApp, {QString::number(i), u""_s});
            make();
            QCOMPARE(copies()[0].rows, i);
            QCOMPARE(copies()[0].isDoubtful, i < 5);
        }
    }

    void goodCopiesOutliveAnyNumberOfDoubtfulOnes()
    {
        for (int i = 1; i <= 3; ++i) {
            addItem(100 + i);
            make();
        }
        session().OpenDb->connection().execute(u"DELETE FROM Main"_s);
        for (int i = 1; i <= 8; ++i) {
            session().OpenDb->connection().execute(u"DELETE FROM OpenApp"_s);
            TestWorld::addRow(session().RsOpenApp, {QString::number(i), u""_s});
            make();
        }
        QList<qint64> rows;
        for (const Copy& copy : copies())
            rows << copy.rows;
        QCOMPARE(rows, QList<qint64>({1, 1, 1, 13, 12, 11}));
    }

    void betweenItsStepsAndWhileItIsCheckedEverybodyMayWrite()
    {
        for (int i = 0; i < 300; ++i)
            TestWorld::addRow(session().RsRefDoc, {u"文献"_s, u"R-991231-%1"_s.arg(i), QString(5000, u'水')});
        sqlite::Connection& connection = session().OpenDb->connection();
        connection.execute(u"PRAGMA busy_timeout = 0"_s);
        int moments = 0;
        int locked = 0;
        const auto asWriter = [&] {
            ++moments;
            // As at the end of a write: nobody else may even be reading.
            locked += errorOf([&] {
                          connection.execute(u"BEGIN EXCLUSIVE"_s);
                          connection.execute(u"ROLLBACK"_s);
                      }) != 0
                          ? 1
                          : 0;
            return true;
        };
        QCOMPARE(make(asWriter), CopyOutcome::Made);
        QCOMPARE(locked, 0);
        const qint64 steps = QFileInfo(path).size() / sqlite::Backup::StepBytes;
        QVERIFY2(steps > 4 && moments > steps, qPrintable(u"%1 moments"_s.arg(moments)));
    }

    void aDatabaseThatIsWrittenAllTheTimeGivesNoCopy()
    {
        for (int i = 0; i < 300; ++i) // more than one step holds
            TestWorld::addRow(session().RsRefDoc, {u"文献"_s, u"R-991231-%1"_s.arg(i), QString(1000, u'水')});
        int writes = 0;
        const auto writing = [&] {
            if (++writes < 1000)
                TestWorld::addRow(session().RsOpenApp, {QString::number(writes), u""_s});
            return true;
        };
        QCOMPARE(errorOf([&] { make(writing, 3); }), errors::Locked);
        QCOMPARE(writes, 4);
        QCOMPARE(filesIn(place().copies()), QStringList());
    }

    void whereNoFolderCanBeMadeThereIsNoCopy()
    {
        QFile inTheWay(world->folder.filePath(u"kept"_s));
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        QString description;
        try {
            make();
        } catch (const Error& error) {
            description = error.description;
        }
        QCOMPARE(description,
                 u"控えのフォルダ「%1」を作成できません。"_s.arg(QDir::toNativeSeparators(place().copies())));
    }

    void aContentThatWasRemovedIsKeptAnew()
    {
        registerFile(u"一.txt"_s, "content");
        make();
        QVERIFY(QDir(place().files()).removeRecursively());
        addItem(11);
        make();
        QCOMPARE(filesIn(place().files()).size(), 1);
    }

    void aDamagedDatabaseGivesNoCopyAndCostsNone()
    {
        make();
        session().OpenDb->connection().execute(u"DROP TABLE OpenApp"_s);
        QCOMPARE(errorOf([&] { make(); }), errors::TableNotFound);
        QCOMPARE(copies().size(), std::size_t{1});
        QCOMPARE(filesIn(place().copies()).size(), 2);
    }

    void copiesThatAreNotToStayGo()
    {
        for (int i = 1; i <= 5; ++i) {
            addItem(100 + i);
            make();
        }
        // The last three, and no more of the same day.
        QCOMPARE(copies().size(), std::size_t{3});
        QCOMPARE(copies()[0].rows, 15);
        QCOMPARE(filesIn(place().copies()).size(), 6);
    }

    void twoCopiesOfTheSameSecondDoNotMeet()
    {
        make();
        addItem(11);
        minute = 0;
        make();
        QCOMPARE(filesIn(place().copies()),
                 QStringList({u"2026-01-31_120100-2.json"_s, u"2026-01-31_120100-2.mdb"_s,
                              u"2026-01-31_120100.json"_s, u"2026-01-31_120100.mdb"_s}));
    }

    void aCopyThatWasHarmedIsKnown()
    {
        make();
        QFile file(copies()[0].path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.seek(5000));
        file.putChar('?');
        file.close();
        QVERIFY(!kept::isUnharmed(copies()[0]));
    }

    void theRegisteredFilesAreKeptByTheirContents()
    {
        registerFile(u"一.txt"_s, "same");
        registerFile(u"二.txt"_s, "same");
        registerFile(u"三.txt"_s, "other");
        make();
        QCOMPARE(filesIn(place().files()).size(), 2);
        const Copy copy = copies()[0];
        QCOMPARE(copy.files.size(), std::size_t{3});
        for (const kept::CopiedFile& file : copy.files) {
            const auto content = kept::FileContents(place()).find(file.hash);
            QVERIFY(content);
            QCOMPARE(kept::FileContents::hashOf(*content),
                     kept::FileContents::hashOf(fileFolder() + u'/' + file.name));
        }
    }

    void aShortcutIsKeptAsItIs()
    {
        registerFile(u"近道.lnk"_s, "short");
        make();
        const Copy copy = copies()[0];
        QCOMPARE(copy.files.size(), std::size_t{1});
        QCOMPARE(copy.files[0].size, 5);
        QVERIFY(copy.files[0].modified > 0);
        QCOMPARE(copy.files[0].hash, kept::FileContents::hashOf(fileFolder() + u"/近道.lnk"_s).value());
    }

    void aFileThatNoItemNamesIsNotKept()
    {
        registerFile(u"一.txt"_s, "ours");
        QFile stranger(fileFolder() + u"/stranger.txt"_s);
        QVERIFY(stranger.open(QIODevice::WriteOnly));
        stranger.write("not ours");
        stranger.close();
        make();
        QCOMPARE(copies()[0].files.size(), std::size_t{1});
    }

    void aFileThatIsTooLargeIsListedAsNotKept()
    {
        registerFile(u"一.txt"_s, "");
        QVERIFY(QFile::resize(fileFolder() + u"/一.txt"_s, qint64{101} * 1024 * 1024)); // takes no room
        make();
        QCOMPARE(copies()[0].files.size(), std::size_t{1});
        QVERIFY(copies()[0].files[0].hash.isEmpty());
        QCOMPARE(filesIn(place().files()), QStringList());
    }

    void aFileThatWouldHaveToBeFetchedIsListedWithWhatIsKeptOfIt()
    {
        registerFile(u"一.txt"_s, "one");
        make();
        registerFile(u"二.txt"_s, "two");
        QCOMPARE(makeWithNothingAtHand(), CopyOutcome::Made);
        const auto files = copies()[0].files;
        QCOMPARE(files.size(), std::size_t{2});
        QCOMPARE(files[0].hash, kept::FileContents::hashOf(fileFolder() + u"/一.txt"_s).value());
        QVERIFY(files[1].hash.isEmpty());
        QCOMPARE(files[1].size, 3);
        QVERIFY(!files[1].isMissing);
        QCOMPARE(filesIn(place().files()).size(), 1);

        // What is kept is not the content of what has changed since.
        QFile changed(fileFolder() + u"/一.txt"_s);
        QVERIFY(changed.open(QIODevice::WriteOnly));
        changed.write("another");
        changed.close();
        addItem(101);
        QCOMPARE(makeWithNothingAtHand(), CopyOutcome::Made);
        QVERIFY(copies()[0].files[0].hash.isEmpty());

        // It is kept when it has been fetched.
        addItem(102);
        make();
        QVERIFY(!copies()[0].files[0].hash.isEmpty() && !copies()[0].files[1].hash.isEmpty());
    }

    void aFileThatIsMissingIsListedWithWhatIsKeptOfIt()
    {
        registerFile(u"一.txt"_s, "one");
        registerFile(u"二.txt"_s, "two");
        make();
        const QByteArray hash = kept::FileContents::hashOf(fileFolder() + u"/一.txt"_s).value();
        QVERIFY(QFile::remove(fileFolder() + u"/一.txt"_s));
        // Whole generations of copies later, too.
        for (int i = 1; i <= 5; ++i) {
            addItem(100 + i);
            make();
        }
        QCOMPARE(copies().size(), std::size_t{3});
        for (const Copy& copy : copies()) {
            QCOMPARE(copy.files.size(), std::size_t{2});
            QVERIFY(copy.files[0].isMissing && !copy.files[1].isMissing);
            QCOMPARE(copy.files[0].name, u"一.txt"_s);
            QCOMPARE(copy.files[0].size, 3);
            QCOMPARE(copy.files[0].hash, hash);
        }
        kept::prune(place(), QDateTime::currentMSecsSinceEpoch() + qint64{2} * 24 * 60 * 60 * 1000);
        QVERIFY(kept::FileContents(place()).find(hash));

        // It is no loss any more when it is back.
        QVERIFY(QFile::copy(kept::FileContents(place()).find(hash).value(), fileFolder() + u"/一.txt"_s));
        addItem(111);
        make();
        QVERIFY(!copies()[0].files[0].isMissing);
    }

    void aFileThatWasNeverThereIsListedAsMissing()
    {
        TestWorld::addRow(session().RsRefFile, {u"一.txt"_s, u"F-991231-1"_s, u"未入力"_s});
        make();
        QCOMPARE(copies()[0].files.size(), std::size_t{1});
        QCOMPARE(copies()[0].files[0].name, u"一.txt"_s);
        QVERIFY(copies()[0].files[0].isMissing);
        QVERIFY(copies()[0].files[0].hash.isEmpty());
    }

    void aCopyOfWhichMostFilesHaveGoneIsDoubted()
    {
        for (int i = 1; i <= 7; ++i)
            registerFile(u"%1.txt"_s.arg(i), "content");
        make();
        const auto lose = [&](int first, int last) {
            for (int i = first; i <= last; ++i)
                QVERIFY(QFile::remove(fileFolder() + u"/%1.txt"_s.arg(i)));
        };
        lose(1, 3);
        addItem(11);
        make();
        QVERIFY(!copies()[0].isDoubtful);
        lose(4, 6);
        for (int i = 12; i <= 13; ++i) {
            addItem(i);
            make();
            QVERIFY(copies()[0].isDoubtful);
        }
        // Whoever deletes the data has not lost the files.
        session().OpenDb->connection().execute(u"DELETE FROM RefFile WHERE Name <> '7.txt'"_s);
        make();
        QVERIFY(!copies()[0].isDoubtful);
    }

    void aNameThatLeadsElsewhereIsNotFollowed()
    {
        registerFile(u"一.txt"_s, "ours");
        TestWorld::addRow(session().RsRefFile, {u"../QUILLON.mdb"_s, u"F-991231-9"_s, u""_s});
        make();
        QCOMPARE(copies()[0].files.size(), std::size_t{1});
    }

    void theWorkerMakesACopyAfterOpeningAndOneAtTheEnd()
    {
        {
            kept::CopyWorker worker(place(), fileFolder(),
                                    kept::CopyTimes{.afterOpening = std::chrono::milliseconds(0),
                                                    .between = std::chrono::hours(1),
                                                    .atClosing = std::chrono::minutes(1)});
            QTRY_COMPARE(copies().size(), std::size_t{1});
            addItem(11);
            worker.finish();
            QCOMPARE(worker.takeFailure(), std::nullopt);
        }
        QCOMPARE(copies()[0].rows, 11);
    }

    void aWorkerThatIsClosedAtOnceMakesItsCopyAllTheSame()
    {
        kept::CopyWorker worker(place(), fileFolder(), kept::CopyTimes());
        worker.finish();
        QCOMPARE(copies().size(), std::size_t{1});
    }

    void aWorkerThatMayNotWaitGivesUp()
    {
        kept::CopyWorker worker(place(), fileFolder(),
                                kept::CopyTimes{.afterOpening = std::chrono::hours(1),
                                                .between = std::chrono::hours(1),
                                                .atClosing = std::chrono::milliseconds(0)});
        session().OpenDb->connection().execute(u"BEGIN EXCLUSIVE"_s); // so that it cannot be quick either
        worker.finish();
        QCOMPARE(copies().size(), std::size_t{0});
        QCOMPARE(filesIn(place().copies()), QStringList());
        session().OpenDb->connection().execute(u"ROLLBACK"_s);
    }

    void whyACopyCouldNotBeMadeIsTold()
    {
        session().OpenDb->connection().execute(u"DROP TABLE OpenApp"_s);
        kept::CopyWorker worker(place(), fileFolder(), kept::CopyTimes());
        worker.finish();
        const auto failure = worker.takeFailure();
        QVERIFY(failure);
        QVERIFY(failure->startsWith(
            u"データベース「"_s + QDir::toNativeSeparators(place().database()) +
            u"」の控えを作成できませんでした。データベースに必要なテーブルがありません。"_s));
        QCOMPARE(worker.takeFailure(), std::nullopt);
    }

    void whyADatabaseCouldNotBeLookedAtIsTold()
    {
        session().OpenDb->connection().execute(u"DROP TABLE OpenApp"_s);
        std::atomic<int> failures = 0;
        kept::CopyWorker worker(place(), fileFolder(), {}, {}, [&] { ++failures; });
        worker.inspectSoon(kept::Inspection::Quick);
        QTRY_COMPARE(failures.load(), 1);
        const auto failure = worker.takeFailure();
        QVERIFY(failure);
        QVERIFY(
            failure->startsWith(u"データベース「"_s + QDir::toNativeSeparators(place().database()) +
                                u"」を検査できませんでした。データベースに必要なテーブルがありません。"_s));
        QCOMPARE(copies().size(), std::size_t{0});
    }

    void theLogTellsWhyTheLastCopyIsMissing()
    {
        world->keeping = std::make_unique<kept::Keeping>(
            session().reporting, kept::KeepingOrder{.keptFolder = world->folder.filePath(u"kept"_s),
                                                    .fileFolder = fileFolder(),
                                                    .copies = kept::CopyTimes()});
        session().OpenDb->connection().execute(u"DROP TABLE OpenApp"_s);
        world->keeping->databaseOpened(*session().OpenDb);
        world->keeping->finish();
        QCOMPARE(world->eventLog.lines.size(), 1);
        QVERIFY(world->eventLog.lines[0].contains(u"LOCATION : KeptCopy"_s));
    }

    void theLogTellsWhileTheProgramRunsAndOnceWhyCopiesAreMissing()
    {
        world->keeping = std::make_unique<kept::Keeping>(
            session().reporting,
            kept::KeepingOrder{.keptFolder = world->folder.filePath(u"kept"_s),
                               .fileFolder = fileFolder(),
                               .copies = kept::CopyTimes{.afterOpening = std::chrono::milliseconds(0)}});
        session().OpenDb->connection().execute(u"DROP TABLE OpenApp"_s);
        world->keeping->databaseOpened(*session().OpenDb);
        QTRY_COMPARE(world->eventLog.lines.size(), 1);
        QVERIFY(world->eventLog.lines[0].contains(u"LOCATION : KeptCopy"_s));
        world->keeping->finish(); // the last copy fails, too
        QCOMPARE(world->eventLog.lines.size(), 1);
    }

    void theDatabaseThatIsOpenedNextLeavesTheOneBeforeItsLastCopy()
    {
        world->keeping = std::make_unique<kept::Keeping>(
            session().reporting, kept::KeepingOrder{.keptFolder = world->folder.filePath(u"kept"_s),
                                                    .fileFolder = fileFolder(),
                                                    .copies = kept::CopyTimes()});
        session().keeper = world->keeping.get();
        world->openDatabase(path);
        const QString other = world->createDatabase(u"other.mdb"_s);
        world->openDatabase(other);
        world->keeping->finish();
        QCOMPARE(copies().size(), std::size_t{1});
        QCOMPARE(kept::listCopies({world->folder.filePath(u"kept"_s), other}).size(), std::size_t{1});
    }
};

QTEST_GUILESS_MAIN(TestCopies)
#include "test_copies.moc"
