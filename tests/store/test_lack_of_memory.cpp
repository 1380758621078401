// Wherever the memory runs out in the middle of work: the operation reports it, and the next one works.
#include "store/database.h"
#include "store/filter_result.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "tests/support/failing_memory.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestLackOfMemory : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;
    QString path;

    /// Lets an operation run out of memory at its first large block, at its second and so on, until it needs no more.
    /// Each time it must have reported that and nothing else.
    void runOutEverywhere(const std::function<void()>& prepare, const std::function<void()>& operation)
    {
#ifdef QUILLON_MEMORY_CAN_FAIL
        int refusals = 0;
        for (int first = 0; first < 1000; ++first) {
            prepare();
            bool refused = false;
            {
                const FailingMemory scarce(first);
                operation();
                refused = FailingMemory::hasRefused();
            }
            if (!refused)
                break;
            ++refusals;
            QVERIFY(world->eventLog.lines.size() <= 1);
            for (const QString& line : std::as_const(world->eventLog.lines))
                QVERIFY2(line.contains(u", ErrorNumber : 7, "_s), qPrintable(line));
            world->eventLog.lines.clear();
            world->dialogs.takeComplaints(); // of the box that the log line stands for
        }
        QVERIFY(refusals > 0);
#else
        Q_UNUSED(prepare);
        Q_UNUSED(operation);
        QSKIP("Memory cannot be made to fail here.");
#endif
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        path = world->createDatabase();
        world->openDatabase(path);
        sqlite::Transaction write(world->session.OpenDb->connection());
        for (int i = 0; i < 8; ++i)
            TestWorld::addRow(world->session.RsRefDoc,
                              {u"水 %1"_s.arg(i), u"R-991231-%1"_s.arg(i), QString(50000, u'水') + u"火"_s});
        write.commit();
    }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void inASearch_data()
    {
        QTest::addColumn<QString>("criteria");
        QTest::newRow("text") << u"Name Like '*火*' OR Explanation Like '*火*'"_s;
        QTest::newRow("pattern") << u"Name Like '*水?火*' OR Explanation Like '*水?火*'"_s;
        QTest::newRow("one field") << u"Explanation Like '*火*'"_s;
    }
    void inASearch()
    {
        QFETCH(QString, criteria);
        std::shared_ptr<RecordSet> found;
        const auto search = [&] {
            found = GetFilterResult(world->session.reporting, world->session.RsRefDoc, criteria);
        };
        runOutEverywhere([&] { world->openDatabase(path); }, search);
        world->openDatabase(path);
        search();
        QVERIFY(found);
        QCOMPARE(found->recordCount(), 8);
    }

    void inReadingAText()
    {
        QString text;
        const auto read = [&] {
            guarded(world->session.reporting, u"test"_s, [&] {
                world->session.RsRefDoc->moveLast();
                text = world->session.RsRefDoc->field(2);
            });
        };
        runOutEverywhere([&] { world->openDatabase(path); }, read);
        read();
        QCOMPARE(text.size(), 50001);
    }

    void inSavingAText()
    {
        const auto save = [&] {
            guarded(world->session.reporting, u"test"_s, [&] {
                world->session.RsRefDoc->moveLast();
                world->session.RsRefDoc->edit();
                world->session.RsRefDoc->setField(2, QString(60000, u'土'));
                world->session.RsRefDoc->update();
            });
        };
        runOutEverywhere([&] { world->openDatabase(path); }, save);
        save();
        world->session.RsRefDoc->moveLast();
        QCOMPARE(world->session.RsRefDoc->field(2), QString(60000, u'土'));
        QCOMPARE(world->session.RsRefDoc->recordCount(), 8);
    }

    void inOpening()
    {
        const QString other = world->createDatabase(u"other.mdb"_s);
        const auto open = [&] { OpenDbFile(world->session, other); };
        runOutEverywhere([&] { world->openDatabase(path); }, open);
        open();
        QCOMPARE(world->session.OpenDb->path(), other);
    }
};

QTEST_GUILESS_MAIN(TestLackOfMemory)
#include "test_lack_of_memory.moc"
