#include "store/sqlite/connection.h"
#include "store/sqlite/handle.h"
#include "store/sqlite/row_watch.h"
#include "store/sqlite/statement.h"
#include "store/sqlite/transaction.h"
#include "tests/support/errors_of.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <new>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;
using sqlite::Connection;
using sqlite::StoredValue;
using sqlite::Transaction;

namespace
{

/// Writes down what is durable, each row as "table row fate: values".
class Told : public sqlite::RowListener
{
public:
    explicit Told(QStringList& lines) : m_lines(lines) {}

    void rowGoes(const sqlite::OldRow& row) override
    {
        if (failing)
            throw std::bad_alloc();
        QStringList values;
        for (int i = 0; i < row.fieldCount(); ++i)
            values << shown(row.field(i));
        m_waiting << QString::fromUtf8(row.table()) + u' ' + QString::number(row.row()) +
                         (row.isDeleted() ? u" deleted: "_s : u" changed: "_s) + values.join(u", ");
    }
    void missed() noexcept override { m_lines << u"missed"_s; }
    std::size_t told() const noexcept override { return static_cast<std::size_t>(m_waiting.size()); }
    void putBack(std::size_t rows) noexcept override
    {
        m_waiting = m_waiting.first(std::min(m_waiting.size(), static_cast<qsizetype>(rows)));
    }
    void durable() noexcept override { m_lines << std::exchange(m_waiting, {}) << u"durable"_s; }
    void settled() noexcept override { ++settledTimes; }

    bool failing = false;
    int settledTimes = 0;

private:
    static QString shown(const StoredValue& value)
    {
        switch (value.type) {
        case StoredValue::Type::Null:
            return u"null"_s;
        case StoredValue::Type::Text:
            return u'"' + value.text.toString() + u'"';
        case StoredValue::Type::Number:
            return QString::number(value.number);
        case StoredValue::Type::Real:
            return QString::number(value.real);
        case StoredValue::Type::Bytes:
            return u'x' + QString::fromLatin1(value.bytes.toByteArray().toHex());
        }
        return {};
    }

    QStringList& m_lines;
    QStringList m_waiting;
};

} // namespace

/// Who is told of the rows that a connection overwrites and deletes, and when.
class TestRowWatch : public QObject
{
    Q_OBJECT

    std::optional<QTemporaryDir> folder;
    std::unique_ptr<Connection> connection;
    QStringList lines;
    Told* told = nullptr;

    QString path() const { return folder->filePath(u"file.mdb"_s); }
    void run(const QString& sql) { connection->execute(sql); }

private Q_SLOTS:
    void init()
    {
        folder.emplace();
        connection = std::make_unique<Connection>(path(), Connection::Mode::CreateNew);
        run(u"CREATE TABLE t (x TEXT, y, CONSTRAINT i UNIQUE (x))"_s);
        run(u"INSERT INTO t VALUES ('水', 'a'), ('火', 'b'), ('土', 'c')"_s);
        auto listener = std::make_unique<Told>(lines);
        told = listener.get();
        connection->watchRows(std::move(listener));
        lines.clear();
    }
    void cleanup()
    {
        connection.reset();
        folder.reset();
    }

    void aRowThatIsOverwrittenOrDeletedIsToldAsItWas()
    {
        run(u"UPDATE t SET y = 'z' WHERE x = '火'"_s);
        run(u"DELETE FROM t WHERE x = '火'"_s);
        QCOMPARE(lines, QStringList({u"t 2 changed: \"火\", \"b\""_s, u"durable"_s,
                                     u"t 2 deleted: \"火\", \"z\""_s, u"durable"_s}));
    }

    void textsOfAFileInAnyEncodingAreTold_data()
    {
        QTest::addColumn<QString>("encoding");
        for (const char* encoding : {"UTF-8", "UTF-16le", "UTF-16be"})
            QTest::newRow(encoding) << QString::fromLatin1(encoding);
    }
    void textsOfAFileInAnyEncodingAreTold()
    {
        QFETCH(QString, encoding);
        const QString foreign = folder->filePath(u"foreign.mdb"_s);
        {
            QFile file(foreign);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        {
            sqlite::Handle handle;
            handle.open(foreign, sqlite::Access::ToUse);
            sqlite::Statement(handle, u"PRAGMA encoding = '"_s + encoding + u'\'').run();
            sqlite::Statement(handle, u"CREATE TABLE t (x TEXT)"_s).run();
            sqlite::Statement(handle, u"INSERT INTO t VALUES ('水とH2O'), ('')"_s).run();
        }
        connection = std::make_unique<Connection>(foreign, Connection::Mode::OpenExisting);
        connection->beginUse();
        connection->watchRows(std::make_unique<Told>(lines));
        run(u"UPDATE t SET x = x || '!'"_s);
        QCOMPARE(lines, QStringList({u"t 1 changed: \"水とH2O\""_s, u"t 2 changed: \"\""_s, u"durable"_s}));
        // Also half a character that gives way to another half.
        const QString high(QChar(0xD83D));
        for (const QString& half : {high, QString(QChar(0xDE00))})
            connection->prepare(u"UPDATE t SET x = ? WHERE rowid = 2"_s).bind(1, half).run();
        QCOMPARE(lines.mid(3), QStringList({u"t 2 changed: \"!\""_s, u"durable"_s,
                                            u"t 2 changed: \""_s + high + u"\""_s, u"durable"_s}));
    }

    void everyRowOfATableThatIsEmptiedIsTold()
    {
        run(u"DELETE FROM t"_s);
        QCOMPARE(lines.size(), 4);
    }

    void valuesOfEveryKindAreTold()
    {
        run(u"INSERT INTO t VALUES (NULL, 12), ('', 1.5), ('bytes', x'00ff')"_s);
        QCOMPARE(lines, QStringList());
        run(u"DELETE FROM t WHERE rowid > 3"_s);
        QCOMPARE(lines, QStringList({u"t 4 deleted: null, 12"_s, u"t 5 deleted: \"\", 1.5"_s,
                                     u"t 6 deleted: \"bytes\", x00ff"_s, u"durable"_s}));
    }

    void whatChangesNothingIsNotTold()
    {
        run(u"UPDATE t SET x = x, y = y"_s);
        run(u"UPDATE t SET y = 'b' WHERE x = '火'"_s);
        run(u"INSERT INTO t VALUES ('new', '')"_s);
        run(u"DELETE FROM t WHERE x = 'missing'"_s);
        QCOMPARE(lines, QStringList());
    }

    void aTextOfTheSameDigitsIsAnotherValueThanTheNumber()
    {
        run(u"INSERT INTO t VALUES ('n', 7)"_s);
        run(u"UPDATE t SET y = '7' WHERE x = 'n'"_s);
        QCOMPARE(lines, QStringList({u"t 4 changed: \"n\", 7"_s, u"durable"_s}));
    }

    void aTransactionIsToldWhenItIsDurable()
    {
        {
            Transaction transaction(*connection);
            run(u"DELETE FROM t WHERE x = '水'"_s);
            run(u"DELETE FROM t WHERE x = '火'"_s);
            QCOMPARE(lines, QStringList());
            transaction.commit();
        }
        QCOMPARE(lines, QStringList({u"t 1 deleted: \"水\", \"a\""_s, u"t 2 deleted: \"火\", \"b\""_s,
                                     u"durable"_s}));
    }

    void aTransactionThatIsUndoneIsNotTold()
    {
        {
            const Transaction transaction(*connection);
            run(u"DELETE FROM t"_s);
        }
        run(u"DELETE FROM t WHERE x = '土'"_s);
        QCOMPARE(lines, QStringList({u"t 3 deleted: \"土\", \"c\""_s, u"durable"_s}));
    }

    void aPartThatIsUndoneIsNotTold()
    {
        {
            Transaction transaction(*connection);
            run(u"DELETE FROM t WHERE x = '水'"_s);
            {
                const Transaction part(*connection);
                run(u"DELETE FROM t WHERE x = '火'"_s);
            }
            {
                Transaction part(*connection);
                run(u"DELETE FROM t WHERE x = '土'"_s);
                part.commit();
            }
            transaction.commit();
        }
        QCOMPARE(lines, QStringList({u"t 1 deleted: \"水\", \"a\""_s, u"t 3 deleted: \"土\", \"c\""_s,
                                     u"durable"_s}));
    }

    void aStatementThatFailsHalfwayIsNotTold()
    {
        {
            Transaction transaction(*connection);
            run(u"DELETE FROM t WHERE x = '水'"_s);
            // The first row may have the new name, the second may not.
            QCOMPARE(errorOf([&] { run(u"UPDATE t SET x = 'same'"_s); }), errors::DuplicateKey);
            QCOMPARE(told->told(), std::size_t{1});
            transaction.commit();
        }
        QCOMPARE(lines, QStringList({u"t 1 deleted: \"水\", \"a\""_s, u"durable"_s}));
    }

    void aQuestionThatFailsTakesNothingBack()
    {
        connection->addPatternTest("fails",
                                   [](const QString&, QStringView) -> bool { throw std::bad_alloc(); });
        Transaction transaction(*connection);
        run(u"DELETE FROM t WHERE x = '水'"_s);
        const auto question = connection->prepareOwn(u"SELECT fails('a', 'b')"_s);
        QVERIFY(errorOf([&] { question->step(); }) != 0);
        transaction.commit();
        QCOMPARE(lines, QStringList({u"t 1 deleted: \"水\", \"a\""_s, u"durable"_s}));
    }

    void aLongTransactionSettlesAsLongAsNoPartOfItCanBeUndone()
    {
        Transaction transaction(*connection);
        run(u"DELETE FROM t WHERE x = '水'"_s);
        QVERIFY(told->settledTimes > 0);
        Transaction part(*connection);
        told->settledTimes = 0;
        run(u"DELETE FROM t WHERE x = '火'"_s);
        QCOMPARE(told->settledTimes, 0);
        part.commit();
        QVERIFY(told->settledTimes > 0);
        told->settledTimes = 0;
        run(u"DELETE FROM t WHERE x = '土'"_s);
        QVERIFY(told->settledTimes > 0);
    }

    void aListenerThatFailsLetsTheRowGoAllTheSame()
    {
        told->failing = true;
        run(u"DELETE FROM t WHERE x = '水'"_s);
        QCOMPARE(lines, QStringList(u"missed"_s));
        const auto count = connection->prepareOwn(u"SELECT count(*) FROM t"_s);
        QVERIFY(count->step());
        QCOMPARE(count->number(0), 2);
    }
};

QTEST_GUILESS_MAIN(TestRowWatch)
#include "test_row_watch.moc"
