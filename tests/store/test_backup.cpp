#include "app/base/error.h"
#include "store/sqlite/backup.h"
#include "store/sqlite/connection.h"
#include "store/sqlite/statement.h"
#include "store/sqlite/transaction.h"
#include "tests/support/errors_of.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;
using sqlite::Backup;
using sqlite::Connection;

/// Copying a database that is in use.
class TestBackup : public QObject
{
    Q_OBJECT

    std::optional<QTemporaryDir> folder;
    std::unique_ptr<Connection> connection;

    QString source() const { return folder->filePath(u"file.mdb"_s); }
    QString target() const { return folder->filePath(u"copy.mdb"_s); }
    static qint64 rowsIn(Backup& backup)
    {
        const auto count = backup.ask(u"SELECT count(*) FROM t"_s);
        return count->step() ? count->number(0) : -1;
    }
    static void goOn(Backup& backup)
    {
        while (backup.step(1000) != Backup::Progress::Done) {
        }
    }

private Q_SLOTS:
    void init()
    {
        folder.emplace();
        connection = std::make_unique<Connection>(source(), Connection::Mode::CreateNew);
        connection->execute(u"CREATE TABLE t (x TEXT)"_s);
        sqlite::Transaction transaction(*connection);
        for (int i = 0; i < 200; ++i)
            connection->execute(u"INSERT INTO t VALUES (printf('%.500c', 'x'))"_s);
        transaction.commit();
    }
    void cleanup()
    {
        connection.reset();
        folder.reset();
    }

    void theCopyHoldsEverything()
    {
        {
            Backup backup(source(), target());
            goOn(backup);
            QCOMPARE(rowsIn(backup), 200);
            backup.keep();
        }
        Connection copy(target(), Connection::Mode::OpenExisting);
        const auto count = copy.prepareOwn(u"SELECT count(*) FROM t"_s);
        QVERIFY(count->step());
        QCOMPARE(count->number(0), 200);
    }

    void betweenTwoStepsNobodyIsKeptFromWriting()
    {
        Backup backup(source(), target());
        QCOMPARE(backup.step(1), Backup::Progress::GoesOn);
        QVERIFY(backup.pagesLeft() > 0);
        connection->execute(u"PRAGMA busy_timeout = 0"_s);
        QCOMPARE(errorOf([&] { connection->execute(u"INSERT INTO t VALUES ('later')"_s); }), 0);
        goOn(backup);
        QCOMPARE(rowsIn(backup), 201);
    }

    void aStepCopiesNoMoreThanAnyDiskReadsInAMoment()
    {
        connection->execute(u"INSERT INTO t VALUES (printf('%.3000000c', 'x'))"_s);
        Backup backup(source(), target());
        constexpr int PageSize = 4096;
        QCOMPARE(backup.mostPages(), Backup::StepBytes / PageSize);
        QCOMPARE(backup.step(1), Backup::Progress::GoesOn);
        const int left = backup.pagesLeft();
        QVERIFY(left > 2 * backup.mostPages());
        QCOMPARE(backup.step(1'000'000), Backup::Progress::GoesOn);
        QCOMPARE(backup.pagesLeft(), left - backup.mostPages());
    }

    void largePagesMakeSmallSteps()
    {
        connection->execute(u"PRAGMA page_size = 65536"_s);
        connection->execute(u"VACUUM"_s);
        const Backup backup(source(), target());
        QCOMPARE(backup.mostPages(), 8);
    }

    void whatAStepCopiedIsWrittenBehindIt()
    {
        connection->execute(u"INSERT INTO t VALUES (printf('%.3000000c', 'x'))"_s);
        Backup backup(source(), target());
        constexpr qint64 Gathered = 131'072; // before it goes to the system
        for (int i = 1; i <= 4; ++i) {
            QCOMPARE(backup.step(100), Backup::Progress::GoesOn);
            QVERIFY(QFileInfo(target()).size() >= qint64{i} * 99 * 4096 - Gathered);
        }
    }

    void theLastStepDoesNotWaitForTheDisk()
    {
        Backup backup(source(), target());
        goOn(backup);
        const auto synchronous = backup.ask(u"PRAGMA synchronous"_s);
        QVERIFY(synchronous->step());
        QCOMPARE(synchronous->number(0), 0);
    }

    void whileSomeoneWritesTheCopyWaits()
    {
        Backup backup(source(), target());
        QCOMPARE(backup.step(1), Backup::Progress::GoesOn);
        connection->execute(u"BEGIN EXCLUSIVE"_s);
        QCOMPARE(backup.step(1), Backup::Progress::IsLocked);
        connection->execute(u"COMMIT"_s);
        goOn(backup);
        QCOMPARE(rowsIn(backup), 200);
    }

    void aCopyThatIsNotKeptLeavesNothing()
    {
        {
            Backup backup(source(), target());
            backup.step(1);
            QVERIFY(QFile::exists(target()));
        }
        QVERIFY(!QFile::exists(target()));
    }

    void aLongQuestionCanBeEnded()
    {
        Backup backup(source(), target());
        goOn(backup);
        int asked = 0;
        backup.setGoesOn([&] { return ++asked < 3; });
        const auto question = backup.ask(u"SELECT count(*) FROM t a, t b, t c"_s);
        QVERIFY(errorOf([&] { question->step(); }) != 0);
        QCOMPARE(asked, 3);
    }

    void whatIsNotThereIsNotCopied()
    {
        QCOMPARE(errorOf([&] { const Backup backup(folder->filePath(u"missing.mdb"_s), target()); }),
                 errors::DatabaseNotFound);
        QVERIFY(!QFile::exists(target()));
    }

    void nothingThatIsThereIsOverwritten()
    {
        QFile file(target());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("mine");
        file.close();
        QCOMPARE(errorOf([&] { const Backup backup(source(), target()); }), errors::CannotOpen);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("mine"));
    }

#ifndef Q_OS_WIN // the folders of a person are closed to others there
    void theCopyIsForTheUserAlone()
    {
        const Backup backup(source(), target());
        QVERIFY(!QFile::permissions(target()).testAnyFlags(QFileDevice::ReadGroup | QFileDevice::ReadOther));
    }
#endif
};

QTEST_GUILESS_MAIN(TestBackup)
#include "test_backup.moc"
