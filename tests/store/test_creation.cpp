#include "store/creation.h"

#include "app/base/error.h"
#include "store/database.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/sqlite/statement.h"
#include "tests/support/errors_of.h"
#include "tests/support/system_calls.h"
#include "tests/support/test_world.h"

#include <QtTest>

#ifdef Q_OS_UNIX
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestCreation : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> m_world;
    QString m_path;

    const MessageBox Made{.text = u"Quillon 用のデータベースを作成しました。"_s};
    const MessageBox Unfinished{
        .text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "
                u"データベースの作成が途中で中断されたファイルか、空のファイルです。"
                u"新規データベース作成で同じ名前を指定すると、作成し直せます。"_s,
        .title = u"Quillon 障害対策部"_s};

    static bool isWhole(const QString& path)
    {
        const auto database = Database::open(path);
        const auto tables = schema::all();
        return std::all_of(tables.begin(), tables.end(),
                           [&](const TableSchema* table) { return database->isAsDeclared(*table); });
    }
    void makeHalf(std::size_t tables) const
    {
        const auto database = Database::create(m_path);
        for (std::size_t i = 0; i < tables; ++i)
            database->execute(schema::all()[i]->statement);
    }

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<TestWorld>();
        m_path = m_world->folder.filePath(u"知識.mdb"_s);
    }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void aNewDatabaseIsEmptyUntilItIsWhole()
    {
        Database::beginCreation(m_path, false);
        QCOMPARE(QFileInfo(m_path).size(), 0); // so that what an abrupt end leaves is known
        createDatabaseFile(m_path);
        QVERIFY(isWhole(m_path));
        const auto database = Database::open(m_path);
        sqlite::Statement& encoding = database->connection().prepare(u"PRAGMA encoding"_s);
        QVERIFY(encoding.step());
        QCOMPARE(encoding.text(0), u"UTF-16le");
    }

    void anAbruptEndAtAnyMomentLeavesAWholeDatabaseOrOneThatIsToldAndCreatedAgain()
    {
#ifdef Q_OS_UNIX
        int unfinished = 0;
        int ended = 0;
        for (int last = 1;; ++last) {
            const pid_t child = fork();
            QVERIFY(child >= 0);
            if (child == 0) {
                int count = 0;
                const SystemCalls calls([&](const QByteArray& call, const QByteArray&) {
                    if (call != "read" && ++count == last)
                        _exit(17);
                    return 0;
                });
                createDatabaseFile(m_path);
                _exit(0);
            }
            int status = 0;
            QCOMPARE(waitpid(child, &status, 0), child);
            QVERIFY(WIFEXITED(status));
            if (isUnfinishedFile(m_path)) {
                ++unfinished;
                m_world->dialogs.expect(Unfinished);
                QVERIFY(!OpenDbFile(m_world->session, m_path));
                m_world->dialogs.expect(Made);
                QCOMPARE(CreateDbFile(m_world->session, m_path), Opening::Opened);
            }
            QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
            if (QFile::exists(m_path)) {
                QVERIFY2(isWhole(m_path), qPrintable(QString::number(last)));
                m_world->openDatabase(m_path);
                m_world->session.closeDatabase();
                QVERIFY(QFile::remove(m_path));
            }
            ++ended;
            if (WEXITSTATUS(status) == 0)
                break;
            QVERIFY(last < 1000);
        }
        QVERIFY(ended > 10);
        QVERIFY(unfinished > 10);
#else
        QSKIP("There is no such end here.");
#endif
    }

    void theJournalsRemovalIsDurableBeforeAWriteCountsAsDone()
    {
#ifdef Q_OS_UNIX
        QByteArrayList calls;
        const QString folder = m_world->folder.path();
        {
            const SystemCalls listener([&](const QByteArray& call, const QByteArray& path) {
                if (call == "unlink" || (call == "open" && QFile::decodeName(path) == folder))
                    calls << call;
                return 0;
            });
            createDatabaseFile(m_path);
        }
        // The folder is opened to be synced: for the journal's name, and after its removal.
        QCOMPARE(calls.last(), "open"_ba);
        QCOMPARE(calls.count("unlink"_ba), 1);
        QVERIFY(calls.size() >= 3);
#else
        QSKIP("There are no such calls here.");
#endif
    }

    void whatAnEndedCreationLeftIsToldAndCreatedAgain_data()
    {
        QTest::addColumn<int>("tables");
        for (const int tables : {-1, 0, 1, 4, 6})
            QTest::addRow("%d tables", tables) << tables;
    }

    void whatAnEndedCreationLeftIsToldAndCreatedAgain()
    {
        QFETCH(int, tables);
        if (tables >= 0)
            makeHalf(static_cast<std::size_t>(tables));
        else
            QVERIFY(QFile(m_path).open(QIODevice::WriteOnly));
        m_world->dialogs.expect(Unfinished);
        QVERIFY(!OpenDbFile(m_world->session, m_path));
        m_world->dialogs.expect(Made);
        QCOMPARE(CreateDbFile(m_world->session, m_path), Opening::Opened);
        QVERIFY(isWhole(m_path));
    }

    void whatHoldsAnythingIsNotCreatedAgain_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::newRow("a row") << u"INSERT INTO Main VALUES ('水', 'M-991231-001', 'x')"_s;
        QTest::newRow("a table of others") << u"CREATE TABLE Other (a)"_s;
        QTest::newRow("a table out of order") << schema::Link().statement;
        QTest::newRow("an index") << u"CREATE INDEX i ON Main (Name)"_s;
    }

    void whatHoldsAnythingIsNotCreatedAgain()
    {
        QFETCH(QString, statement);
        makeHalf(1);
        Database::open(m_path)->execute(statement);
        QCOMPARE(errorOf([&] { createDatabaseFile(m_path); }), errors::DatabaseExists);
        QVERIFY(!isWhole(m_path));
    }

    void theOlderLayoutIsNoUnfinishedCreation()
    {
        makeHalf(5);
        QVERIFY(!isUnfinishedFile(m_path));
        QCOMPARE(errorOf([&] { createDatabaseFile(m_path); }), errors::DatabaseExists);
    }
};

QTEST_GUILESS_MAIN(TestCreation)
#include "test_creation.moc"
