// A program is killed at random moments of its writes: of what it overwrote, the history lacks the last entry at most,
// and nothing stands there that did not happen.
#include "store/database.h"
#include "store/kept/history.h"
#include "store/kept/keeping.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/faults/children.h"
#include "tests/faults/fault_world.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestHistoryKills : public QObject
{
    Q_OBJECT

private:
    static constexpr int WritesOfOneLife = 2000;

    static kept::Place placeIn(const QString& folder)
    {
        return {folder + u"/kept"_s, folder + u"/QUILLON.mdb"_s};
    }
    /// What a program does as long as it lives: it counts on in one row.
    static void live(const QString& folder, const Child::Tell& tell)
    {
        MemoryEventLog eventLog;
        PatientDialogs dialogs;
        FixedClock clock;
        Reporting reporting{.dialogs = dialogs, .eventLog = eventLog, .clock = clock};
        kept::Keeping keeping(reporting, {.keptFolder = folder + u"/kept"_s, .fileFolder = {}});
        const auto database = Database::open(folder + u"/QUILLON.mdb"_s);
        keeping.databaseOpened(*database);
        const auto rows = RecordSet::openTable(database, schema::OpenApp());
        rows->moveFirst();
        const int begin = rows->field(0).toInt();
        for (int i = 1; i <= WritesOfOneLife; ++i) {
            rows->edit();
            rows->setField(0, QString::number(begin + i));
            rows->update();
            tell(i);
        }
    }
    /// What stands in the row.
    static int counted(const QString& folder)
    {
        const auto database = Database::open(folder + u"/QUILLON.mdb"_s);
        const auto rows = RecordSet::openTable(database, schema::OpenApp());
        rows->moveFirst();
        return rows->field(0).toInt();
    }
    /// What stood there before, oldest first.
    static QList<int> kept(const QString& folder)
    {
        kept::History history(placeIn(folder));
        while (history.readOlder()) {
        }
        QList<int> numbers;
        for (const kept::Event& event : history.events())
            numbers << history.row(event).text(0).toInt();
        std::sort(numbers.begin(), numbers.end());
        return numbers;
    }

    static void makeDatabase(const QString& folder)
    {
        const auto database = Database::create(folder + u"/QUILLON.mdb"_s);
        for (const TableSchema* table : schema::all())
            database->execute(table->statement);
        TestWorld::addRow(RecordSet::openTable(database, schema::OpenApp()), {u"0"_s, u""_s});
    }

    struct Counts {
        int writes = 0;
        int missing = 0;
    };

    /// Lets programs live on one database and kills them one after the other.
    static void killAgainAndAgain(int kills, std::mt19937& random, Counts& counts)
    {
        const QTemporaryDir folder;
        makeDatabase(folder.path());
        int before = 0; // what was there when the last life began
        QList<int> expected;
        for (int i = 0; i < kills; ++i) {
            {
                Child child([&](const Child::Tell& tell) { live(folder.path(), tell); });
                const auto messages = 1 + random() % 30;
                int number = 0;
                for (std::size_t n = 0; n < messages; ++n)
                    QCOMPARE(child.hear(number), Child::Heard::Number);
                // And a moment, so that it is met at every point of a write.
                child.hear(number, static_cast<int>(random() % 300));
                child.kill();
                child.finish();
            }
            const int now = counted(folder.path());
            for (int value = before; value < now; ++value)
                expected << value;
            const QList<int> actual = kept(folder.path());
            // The row was durable, its entry was not yet written.
            if (actual != expected) {
                ++counts.missing;
                expected.removeLast();
            }
            QVERIFY2(actual == expected,
                     qPrintable(u"kill %1: %2 entries instead of %3"_s.arg(i).arg(
                         QString::number(actual.size()), QString::number(expected.size()))));
            before = now;
        }
        QVERIFY(!expected.isEmpty());
        counts.writes += before;
    }

private Q_SLOTS:
    void ofWhatWasOverwrittenTheLastEntryIsMissingAtMost()
    {
        std::mt19937 random(seedOfRun());
        const int kills = numberFromEnvironment("QUILLON_KILLS", 40);
        // The whole history is read after each kill: now and then it begins anew, lest that take ever longer.
        constexpr int KillsOfOneDatabase = 500;
        Counts counts;
        for (int done = 0; done < kills && !QTest::currentTestFailed(); done += KillsOfOneDatabase)
            killAgainAndAgain(std::min(KillsOfOneDatabase, kills - done), random, counts);
        qInfo("%d kills, %d writes, %d entries missing", kills, counts.writes, counts.missing);
    }
};

QTEST_GUILESS_MAIN(TestHistoryKills)
#include "test_history_kills.moc"
