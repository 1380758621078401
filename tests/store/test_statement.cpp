#include "store/sqlite/connection.h"
#include "store/sqlite/statement.h"
#include "tests/support/errors_of.h"

#include <QTemporaryDir>
#include <QTest>

#include <optional>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;
using sqlite::Statement;

class TestStatement : public QObject
{
    Q_OBJECT

private:
    std::optional<QTemporaryDir> folder;
    std::optional<sqlite::Connection> connection;

private Q_SLOTS:
    void init()
    {
        folder.emplace();
        connection.emplace(folder->filePath(u"file.mdb"_s), sqlite::Connection::Mode::CreateNew);
    }

    void cleanup()
    {
        connection.reset();
        folder.reset();
    }

    void columnsBesideTheResultAreMistakes_data()
    {
        QTest::addColumn<int>("column");
        QTest::newRow("before the first") << -1;
        QTest::newRow("behind the last") << 2;
    }
    void columnsBesideTheResultAreMistakes()
    {
        QFETCH(int, column);
        const auto statement = connection->prepareOwn(u"SELECT 'a', 1"_s);
        QVERIFY(statement->step());
        QCOMPARE(statement->text(0), u"a");
        QCOMPARE(statement->number(1), 1);
        QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->text(column));
        QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->number(column));
        QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->isNull(column));
    }

    void readingWithoutARowIsAMistake()
    {
        const auto statement = connection->prepareOwn(u"SELECT 'a'"_s);
        QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->text(0));
        QVERIFY(statement->step());
        QCOMPARE(statement->text(0), u"a");
        QVERIFY(!statement->step());
        QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->isNull(0));
        statement->reset();
        QVERIFY(statement->step());
        QCOMPARE(statement->text(0), u"a");
        statement->reset();
        QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->number(0));
    }

    void bindingBesideTheParametersIsAMistake()
    {
        const auto statement = connection->prepareOwn(u"SELECT ?, ?"_s);
        for (const int position : {0, 3}) {
            QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->bind(position, u"a"));
            QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->bind(position, 1));
        }
        QVERIFY(statement->bind(1, u"a").bind(2, 2).step());
        QCOMPARE(statement->text(0), u"a");
        QCOMPARE(statement->number(1), 2);
    }

    void bindingInTheMiddleOfTheRowsIsAMistake()
    {
        const auto statement = connection->prepareOwn(u"SELECT ? UNION ALL SELECT 'b'"_s);
        QVERIFY(statement->bind(1, u"a").step());
        QVERIFY_THROWS_EXCEPTION(std::logic_error, statement->bind(1, u"c"));
        QVERIFY(statement->step());
        QCOMPARE(statement->text(0), u"b");
    }

    void everyTypeComesAsAText_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isNull");
        const auto row = [](const char* name, const QString& value, const QString& text) {
            QTest::newRow(name) << value << text << false;
        };
        QTest::newRow("nothing") << u"NULL"_s << QString() << true;
        row("text", u"'水'"_s, u"水"_s);
        row("empty text", u"''"_s, QString());
        row("whole number", u"-9223372036854775808"_s, u"-9223372036854775808"_s);
        row("fraction", u"1.5"_s, u"1.5"_s);
        row("infinite number", u"9e999"_s, u"Inf"_s);
        row("empty bytes", u"x''"_s, QString());
        row("bytes of a text", u"x'346C'"_s, u"水"_s);
        row("half a character", u"x'346C34'"_s, u"水"_s);
        row("a single byte", u"x'34'"_s, QString());
        row("half of a surrogate pair", u"x'3DD8'"_s, QString(QChar(0xD83D)));
        row("zeros", u"x'00000000'"_s, QString(2, QChar::Null));
        row("many zeros", u"zeroblob(2000000)"_s, QString(1000000, QChar::Null));
    }
    void everyTypeComesAsAText()
    {
        QFETCH(QString, value);
        QFETCH(QString, text);
        QFETCH(bool, isNull);
        connection->execute(u"CREATE TABLE t (x)"_s);
        connection->execute(u"INSERT INTO t VALUES ("_s + value + u')');
        const auto statement = connection->prepareOwn(u"SELECT x FROM t"_s);
        QVERIFY(statement->step());
        QCOMPARE(statement->isNull(0), isNull);
        QCOMPARE(statement->text(0), text);
        QCOMPARE(statement->text(0), text); // what has been converted once stays so
    }

    void textWhereANumberIsExpectedIsTheOneItBeginsWith()
    {
        const auto statement = connection->prepareOwn(u"SELECT '12 pages', 'page', NULL, 2.9, x'31003200'"_s);
        QVERIFY(statement->step());
        QCOMPARE(statement->number(0), 12);
        QCOMPARE(statement->number(1), 0);
        QCOMPARE(statement->number(2), 0);
        QCOMPARE(statement->number(3), 2);
        QCOMPARE(statement->number(4), 12);
    }

    void oneStatementIsAsked_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::newRow("none") << u"-- nothing"_s;
        QTest::newRow("two") << u"SELECT 1; SELECT 2"_s;
    }
    void oneStatementIsAsked()
    {
        QFETCH(QString, sql);
        QCOMPARE(errorOf([&] { connection->prepareOwn(sql); }), errors::CriteriaSyntax);
    }

    void statementInTheCacheComesBackWithoutValues()
    {
        QVERIFY(connection->prepare(u"SELECT ?"_s).bind(1, u"a").step());
        Statement& again = connection->prepare(u"SELECT ?"_s);
        QVERIFY(again.step());
        QVERIFY(again.isNull(0));
    }
};

QTEST_GUILESS_MAIN(TestStatement)
#include "test_statement.moc"
