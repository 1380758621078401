// A power failure at every moment of every operation, on a disk that keeps, drops, tears and reorders whatever nobody has
// synced: the file is whole afterwards, and everything that had been reported as done is in it.
#include "app/base/titles.h"
#include "store/database.h"
#include "tests/faults/crashed_disk.h"
#include "tests/faults/fault_world.h"
#include "tests/faults/faulty_disk.h"
#include "tests/faults/recorded_calls.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <optional>

#include <sqlite3.h>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

using Outcome = FaultWorld::Outcome;

class TestPowerFailure : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_prepared; // what a test begins with
    Model m_model;
    std::mt19937 m_random;
    int m_disks = 0; // that were looked at

    /// What is done to the registered files, where it can be known.
    struct Recording {
#ifdef Q_OS_LINUX
        explicit Recording(const QString& folder) : calls(registeredIn(folder)) {}
        RecordedCalls calls;
#else
        explicit Recording(const QString&) {}
#endif
    };

    static bool isLong()
    {
        return numberFromEnvironment("QUILLON_FAULTS_LONG", 0) != 0;
    }
    static FaultyDisk& disk()
    {
        return FaultyDisk::instance();
    }

    static void put(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no disk for the crashed disk");
    }
    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static QString registeredIn(const QString& folder)
    {
        return folder + u'/' + titles::FileFolder;
    }

    /// The database, its journal and the registered files as a power failure has left them, in a folder of their own.
    static void layOut(const CrashedDisk::Files& files, const QString& folder)
    {
        for (const QString& ending : {u""_s, u"-journal"_s})
            QFile::remove(folder + u"/QUILLON.mdb"_s + ending);
        QDir(registeredIn(folder)).removeRecursively();
        QDir().mkdir(registeredIn(folder));
        for (const auto& [name, content] : files) {
            if (name.endsWith(u'/'))
                QDir().mkdir(folder + u'/' + name);
            else
                put(folder + u'/' + name, content);
        }
    }

    /// Each moment with some disks that a failure at that moment may leave.
    template <class Look>
    void atEveryMoment(const QString& folder, const std::vector<DiskEvent>& events,
                       const CrashedDisk::Files& before, Look&& look)
    {
        const int disks = numberFromEnvironment("QUILLON_CRASH_DISKS", isLong() ? 12 : 2);
        for (std::size_t moment = 0; moment <= events.size(); ++moment) {
            if (!isLong() && m_random() % 4 != 0 && moment != events.size())
                continue;
            const CrashedDisk crashed(folder, before,
                                      {events.begin(), events.begin() + static_cast<std::ptrdiff_t>(moment)});
            for (int i = 0; i < disks; ++i) {
                // The two extremes first: nothing that was not synced, and everything.
                const auto loss = i == 0   ? CrashedDisk::Loss::All
                                  : i == 1 ? CrashedDisk::Loss::Some
                                           : static_cast<CrashedDisk::Loss>(m_random() % 3);
                ++m_disks;
                look(crashed.files(loss, m_random), crashed.lastMark());
                if (QTest::currentTestFailed())
                    return;
            }
        }
    }

    static CrashedDisk::Files filesIn(const QString& folder)
    {
        CrashedDisk::Files files;
        for (const QString& ending : {u""_s, u"-journal"_s}) {
            QFile file(folder + u"/QUILLON.mdb"_s + ending);
            if (file.open(QIODevice::ReadOnly))
                files[u"QUILLON.mdb"_s + ending] = file.readAll();
        }
        for (const QString& name : QDir(registeredIn(folder)).entryList(QDir::Files))
            files[titles::FileFolder + u'/' + name] = contentOf(registeredIn(folder) + u'/' + name);
        return files;
    }

    /// `states[i]`: what the file holds when i steps are done. The last mark tells how many were.
    void checkAllMoments(const QString& worked, const std::vector<DiskEvent>& events,
                         const CrashedDisk::Files& before, const std::vector<Model>& states,
                         const QString& about)
    {
        QTemporaryDir folder;
        atEveryMoment(worked, events, before, [&](const CrashedDisk::Files& files, int done) {
            layOut(files, folder.path());
            FaultWorld world(folder.path());
            const Outcome opened = world.open(u"QUILLON.mdb"_s);
            QVERIFY2(opened == Outcome::Done,
                     qPrintable(about + u" cannot be opened: "_s + world.told().join(u'\n')));
            world.close();
            QString why;
            const auto actual = readModel(world.path(u"QUILLON.mdb"_s), why);
            QVERIFY2(actual, qPrintable(about + u" is not whole: "_s + why));
            const auto reported = static_cast<std::size_t>(done);
            const bool isNext = reported + 1 < states.size() && *actual == states[reported + 1];
            QVERIFY2(*actual == states[reported] || isNext,
                     qPrintable(u"%1 after %2 steps: "_s.arg(about).arg(done) +
                                difference(*actual, states[reported])));
            // Whatever has a row is there as a whole.
            const QString problem = filesProblem(folder.path(), *actual);
            QVERIFY2(problem.isEmpty(), qPrintable(u"%1 after %2 steps: "_s.arg(about).arg(done) + problem));
        });
    }

    /// Performs steps one after the other and lets the power fail at every moment of them.
    void checkSteps(const std::vector<Step>& steps, const QString& about)
    {
        QTemporaryDir folder;
        prepareFolder(folder.path());
        std::vector<Model> states{m_model};
        FaultWorld world(folder.path());
        const CrashedDisk::Files before = filesIn(folder.path());
        QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
        const Recording recording(folder.path());
        disk().startRecording();
        disk().mark(0);
        for (const Step& step : steps) {
            QVERIFY2(world.perform(step) == Outcome::Done,
                     qPrintable(step.described() + world.told().join(u'\n')));
            states.push_back(after(step, states.back()));
            disk().mark(static_cast<int>(states.size()) - 1);
        }
        checkAllMoments(folder.path(), disk().stopRecording(), before, states, about);
    }

private Q_SLOTS:
    void initTestCase()
    {
        disk();
        m_random.seed(seedOfRun());
        m_model = prepareFolder(m_prepared.path());
    }

    void cleanupTestCase()
    {
        qInfo("%d crashed disks", m_disks);
    }

    void everyStepSurvives_data()
    {
        QTest::addColumn<int>("kind");
        for (int kind = 0; kind < static_cast<int>(Step::Kind::Count); ++kind)
            QTest::addRow("%d", kind) << kind;
    }
    void everyStepSurvives()
    {
        QFETCH(const int, kind);
        for (int i = 0, times = isLong() ? 10 : 1; i < times; ++i) {
            if (const auto step = randomStep(static_cast<Step::Kind>(kind), m_random, m_model, {}))
                checkSteps({*step}, step->described());
        }
    }

    void stepsAfterEachOtherSurvive()
    {
        for (int i = 0, times = isLong() ? 20 : 1; i < times; ++i) {
            std::vector<Step> steps;
            Model model = m_model;
            for (int n = 0; n < 10; ++n) {
                steps.push_back(randomStep(m_random, model, {}));
                model = after(steps.back(), model);
            }
            checkSteps(steps, u"a row of steps"_s);
        }
    }

#ifdef Q_OS_LINUX
    void aFileThatIsReplacedIsOneOfTheTwoAndTheOneOfItsRow()
    {
        const QString name = u"資料.bin"_s;
        const QByteArray former = QByteArray("former ").repeated(400);
        const QByteArray fresh = QByteArray("fresh ").repeated(700);
        const auto registration = [](const QString& identifier, const QString& file) {
            return Step{.kind = Step::Kind::RegisterFile,
                        .identifier = identifier,
                        .other = {},
                        .name = file,
                        .content = u"未入力"_s,
                        .many = {}};
        };
        QTemporaryDir folder; // the same all the time: what is left is known by the name of its database
        prepareFolder(folder.path());
        put(folder.filePath(name), former);
        const Step first = registration(u"F-001231-001"_s, name);
        const Step second = registration(u"F-001231-002"_s, name);
        const Model before = after(first, m_model);
        CrashedDisk::Files files;
        std::vector<DiskEvent> events;
        {
            FaultWorld world(folder.path());
            QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
            QCOMPARE(world.perform(first), Outcome::Done);
            put(folder.filePath(name), fresh);
            files = filesIn(folder.path());
            const Recording recording(folder.path());
            disk().startRecording();
            disk().mark(0);
            QCOMPARE(world.perform(second), Outcome::Done);
            disk().mark(1);
            events = disk().stopRecording();
        }

        const QString stored = registeredIn(folder.path()) + u'/' + name;
        atEveryMoment(folder.path(), events, files, [&](const CrashedDisk::Files& crashed, int done) {
            layOut(crashed, folder.path());
            const QString about = u"disk %1"_s.arg(m_disks);
            FaultWorld next(folder.path());
            QVERIFY2(next.open(u"QUILLON.mdb"_s) == Outcome::Done, qPrintable(next.told().join(u'\n')));
            const Model actual = next.seen();
            const bool isRegistered = actual == after(second, before);
            QVERIFY2(isRegistered || (actual == before && done == 0), qPrintable(about));
            const QByteArray content = contentOf(stored);
            QVERIFY2(content == fresh || (content == former && !isRegistered), qPrintable(about));
            // The next registration settles what was left.
            QCOMPARE(next.perform(registration(u"F-001231-003"_s, sourceFile(0))), Outcome::Done);
            QVERIFY2(contentOf(stored) == (isRegistered ? fresh : former), qPrintable(about));
            const QStringList beside = QDir(registeredIn(folder.path()))
                                           .entryList({u".quillon-*"_s}, QDir::AllEntries | QDir::Hidden);
            QVERIFY2(beside.isEmpty(), qPrintable(about + u" leaves "_s + beside.join(u", "_s)));
        });
    }
#endif

    void aCreationIsThereOrCanBeDoneAgain()
    {
        QTemporaryDir folder;
        FaultWorld world(folder.path());
        disk().startRecording();
        disk().mark(0);
        // The file itself is not made by SQLite; until its name is synced it may be gone.
        disk().note({.kind = DiskEvent::Kind::Make, .path = world.path(u"QUILLON.mdb"_s)});
        QCOMPARE(world.create(u"QUILLON.mdb"_s), Outcome::Done);
        disk().mark(1);
        const auto events = disk().stopRecording();
        QTemporaryDir left;
        atEveryMoment(folder.path(), events, {}, [&](const CrashedDisk::Files& files, int done) {
            layOut(files, left.path());
            FaultWorld next(left.path());
            const Outcome opened = next.open(u"QUILLON.mdb"_s);
            QVERIFY2(opened == Outcome::Done || (opened == Outcome::Failed && done == 0),
                     qPrintable(next.told().join(u'\n')));
            if (opened != Outcome::Done) {
                QVERIFY2(next.create(u"QUILLON.mdb"_s) == Outcome::Done, qPrintable(next.told().join(u'\n')));
            }
            QCOMPARE(difference(next.seen(), Model()), QString());
        });
    }

    void aConversionSurvives()
    {
        QTemporaryDir folder;
        prepareFolder(folder.path());
        const QString path = folder.filePath(u"QUILLON.mdb"_s);
        sqlite3* file = nullptr;
        QCOMPARE(sqlite3_open_v2(path.toUtf8().constData(), &file, SQLITE_OPEN_READWRITE, "unix"), SQLITE_OK);
        QCOMPARE(sqlite3_exec(file, "DROP TABLE Category; DROP TABLE Category_ID", nullptr, nullptr, nullptr),
                 SQLITE_OK);
        sqlite3_close(file);
        const CrashedDisk::Files before = filesIn(folder.path());
        FaultWorld world(folder.path());
        disk().startRecording();
        disk().mark(0);
        QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
        disk().mark(1);
        Model converted = m_model;
        converted.categories.clear();
        converted.memberships.clear();
        checkAllMoments(folder.path(), disk().stopRecording(), before, {converted, converted},
                        u"a conversion"_s);
    }

    void theRepairSurvives()
    {
        // The power fails in the middle of a step, and once more while the file is repaired.
        const auto step = randomStep(Step::Kind::DeleteMany, m_random, m_model, {});
        QTemporaryDir folder;
        prepareFolder(folder.path());
        const CrashedDisk::Files before = filesIn(folder.path());
        std::vector<DiskEvent> events;
        {
            FaultWorld world(folder.path());
            QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
            disk().startRecording();
            QCOMPARE(world.perform(*step), Outcome::Done);
            events = disk().stopRecording();
        }
        // The last moment at which the journal is to be played back: right before it goes.
        const auto end = std::find_if(events.begin(), events.end(), [](const DiskEvent& event) {
            return event.kind == DiskEvent::Kind::Unlink;
        });
        QVERIFY(end != events.end());
        const CrashedDisk crashed(folder.path(), before, {events.begin(), end});
        const CrashedDisk::Files broken = crashed.files(CrashedDisk::Loss::None, m_random);
        QVERIFY(broken.contains(u"QUILLON.mdb-journal"_s));
        layOut(broken, folder.path());
        FaultWorld world(folder.path());
        disk().startRecording();
        disk().mark(0);
        QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
        disk().mark(1);
        checkAllMoments(folder.path(), disk().stopRecording(), broken, {m_model, m_model}, u"a repair"_s);
    }
};

QTEST_GUILESS_MAIN(TestPowerFailure)
#include "test_power_failure.moc"
