#include "app/base/error.h"
#include "store/sqlite/connection.h"
#include "store/sqlite/statement.h"
#include "tests/store/foreign_file.h"
#include "tests/support/errors_of.h"

#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <optional>
#include <thread>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;
using sqlite::Connection;

/// How a connection to a file is set up, and the statements it keeps.
class TestConnection : public QObject
{
    Q_OBJECT

    std::optional<QTemporaryDir> folder;

    QString path() const { return folder->filePath(u"file.mdb"_s); }
    static qint64 numberOf(Connection& connection, const QString& question)
    {
        const auto statement = connection.prepareOwn(question);
        return statement->step() ? statement->number(0) : -1;
    }

private Q_SLOTS:
    void init() { folder.emplace(); }
    void cleanup() { folder.reset(); }

    void everyConnectionIsSetUpToLoseNothingAndToTrustNoFile_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<int>("atLeast");
        QTest::addColumn<int>("atMost");
        QTest::newRow("writes through to the disk") << u"synchronous"_s << 2 << 3;
        QTest::newRow("checks every page it reads") << u"cell_size_check"_s << 1 << 1;
        QTest::newRow("trusts no code of the file") << u"trusted_schema"_s << 0 << 0;
        QTest::newRow("sorts in memory") << u"temp_store"_s << 2 << 2;
    }
    void everyConnectionIsSetUpToLoseNothingAndToTrustNoFile()
    {
        QFETCH(QString, setting);
        QFETCH(int, atLeast);
        QFETCH(int, atMost);
        for (const Connection::Mode mode : {Connection::Mode::CreateNew, Connection::Mode::OpenExisting}) {
            Connection connection(path(), mode);
            const qint64 number = numberOf(connection, u"PRAGMA "_s + setting);
            QVERIFY2(number >= atLeast && number <= atMost, qPrintable(QString::number(number)));
        }
    }

    void aWriteWaitsForAReaderThatSoonEnds()
    {
        Connection connection(path(), Connection::Mode::CreateNew);
        connection.execute(u"CREATE TABLE t (x)"_s);
        QSemaphore reading;
        std::atomic<bool> ended = false;
        std::thread reader([&] {
            ForeignFile other(path());
            other.run("BEGIN").ask("SELECT * FROM t");
            reading.release();
            // A writer that waits for readers to end lets no new one in.
            ForeignFile third(path());
            while (!ended &&
                   sqlite3_exec(third.handle(), "SELECT * FROM t", nullptr, nullptr, nullptr) != SQLITE_BUSY)
                std::this_thread::yield();
            other.run("COMMIT");
        });
        reading.acquire();
        std::optional<int> error;
        try {
            connection.execute(u"INSERT INTO t VALUES (1)"_s);
        } catch (const Error& failure) {
            error = failure.number;
        }
        ended = true;
        reader.join();
        QCOMPARE(error, std::optional<int>());
        QCOMPARE(numberOf(connection, u"SELECT count(*) FROM t"_s), 1);
    }

    void aNewFileHoldsItsTextsInSixteenBits()
    {
        Connection(path(), Connection::Mode::CreateNew).execute(u"CREATE TABLE t (x)"_s);
        Connection connection(path(), Connection::Mode::OpenExisting);
        const auto encoding = connection.prepareOwn(u"PRAGMA encoding"_s);
        QVERIFY(encoding->step());
        QCOMPARE(encoding->text(0), u"UTF-16le");
    }

    void moreStatementsThanAreKeptCanBeAsked()
    {
        Connection connection(path(), Connection::Mode::CreateNew);
        constexpr int Many = 1000;
        // Some are asked again and again, so that those which go are in the middle.
        for (int round = 0; round < Many; ++round) {
            for (const int number : {round, 3, round / 2}) {
                sqlite::Statement& statement = connection.prepare(u"SELECT %1"_s.arg(number));
                const sqlite::ResetAtEnd reset(statement);
                QVERIFY(statement.step());
                QCOMPARE(statement.number(0), number);
            }
        }
    }

    void aViewOfAForeignFileIsNotAnswered()
    {
        Connection connection(path(), Connection::Mode::CreateNew);
        connection.execute(u"CREATE TABLE t (x)"_s);
        connection.execute(u"CREATE VIEW v AS SELECT 1 FROM t"_s);
        QVERIFY(errorOf([&] { connection.prepareOwn(u"SELECT * FROM v"_s); }) != 0);
        QCOMPARE(errorOf([&] { connection.prepareOwn(u"SELECT * FROM t"_s); }), 0);
    }

    void whatStandsInDoubleQuotesIsAName()
    {
        Connection connection(path(), Connection::Mode::CreateNew);
        connection.execute(u"CREATE TABLE t (x)"_s);
        // Otherwise a field that is missing would be taken for a text.
        QCOMPARE(errorOf([&] { connection.prepareOwn(u"SELECT \"missing\" FROM t"_s); }),
                 errors::UnknownField);
    }
};

QTEST_GUILESS_MAIN(TestConnection)
#include "test_connection.moc"
