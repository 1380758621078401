// Every call to the system fails while something is kept, taken out or put back: the operation is done or told, what is
// there is whole, and what was kept before is there as ever.
#include "app/base/error.h"
#include "app/base/titles.h"
#include "core/kept_copies.h"
#include "core/lost_things.h"
#include "core/restoring.h"
#include "store/kept/copies.h"
#include "store/kept/file_contents.h"
#include "store/kept/history.h"
#include "store/kept/pruning.h"
#include "tests/faults/failing_attempts.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <array>
#include <set>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

using Outcome = FaultWorld::Outcome;

class TestFailingKeeping : public QObject, private FailingAttempts
{
    Q_OBJECT

private:
    QTemporaryDir m_prepared;
    Model m_model;

    /// A program on a database of its own, like the prepared one.
    struct Fresh {
        explicit Fresh(const QString& prepared) : world(folder.path())
        {
            copyFolder(prepared, folder.path());
            world.keep();
            if (world.open(u"QUILLON.mdb"_s) != Outcome::Done)
                qFatal("the prepared database cannot be opened");
        }
        QTemporaryDir folder;
        FaultWorld world;
    };

    static std::size_t eventsIn(const FaultWorld& world)
    {
        kept::History history(world.place());
        while (history.readOlder()) {
        }
        return history.events().size();
    }
    static bool logTells(const FaultWorld& world, const QString& location)
    {
        return std::any_of(world.eventLog.lines.begin(), world.eventLog.lines.end(),
                           [&](const QString& line) { return line.contains(location); });
    }
    static kept::CopyOrder copyOrder(const FaultWorld& world, int minute)
    {
        return {.place = world.place(),
                .fileFolder = world.path(titles::FileFolder),
                .now = [minute] { return QDateTime(QDate(2026, 1, 31), QTime(12, minute)); },
                .goesOn = [] { return true; },
                .inspection = kept::Inspection::Quick};
    }
    /// What is wrong with the copies of a place; empty for nothing.
    static QString problemOfCopies(const kept::Place& place)
    {
        const kept::FileContents contents(place);
        for (const kept::Copy& copy : kept::listCopies(place)) {
            if (!kept::isUnharmed(copy))
                return copy.path + u" is not what it was"_s;
            QString why;
            if (!readModel(copy.path, why))
                return copy.path + u": "_s + why;
            for (const kept::CopiedFile& file : copy.files) {
                if (!file.hash.isEmpty() && !contents.find(file.hash))
                    return u"the content of "_s + file.name + u" is not there"_s;
            }
        }
        return {};
    }

private Q_SLOTS:
    void initTestCase() { m_model = prepareFolder(m_prepared.path()); }
    void cleanupTestCase() const { qInfo("%d calls failed", m_failures); }

    void whatAnOperationOverwritesIsKeptOrTold_data() { addFailures(); }
    void whatAnOperationOverwritesIsKeptOrTold()
    {
        constexpr std::array kinds{Step::Kind::Update, Step::Kind::Delete, Step::Kind::Unlink,
                                   Step::Kind::RenameCategory, Step::Kind::DeleteCategory};
        for (const Step::Kind kind : kinds) {
            const auto step = randomStep(kind, m_random, m_model, {});
            if (!step || (!isLong() && m_random() % 2 != 0))
                continue;
            atEveryCall([&](int n) {
                Fresh fresh(m_prepared.path());
                FaultWorld& world = fresh.world;
                const Attempt result = attempt(n, world, [&] { return world.perform(*step); });
                const QString about = step->described() + u", "_s + result.about;
                [&] {
                    QVERIFY2(isDoneOrTold(result), qPrintable(about));
                    const auto actual = modelOf(world, about);
                    QVERIFY(actual);
                    const bool stands = *actual == after(*step, m_model);
                    QVERIFY2(stands || (*actual == m_model && result.outcome != Outcome::Done),
                             qPrintable(about));
                    const std::size_t events = eventsIn(world);
                    QVERIFY2(events == (stands ? 1U : 0U) || (events == 0 && logTells(world, u"History"_s)),
                             qPrintable(about + u": %1 events"_s.arg(events)));
                    // The next one is kept again.
                    const auto next = randomStep(Step::Kind::Delete, m_random, *actual, {});
                    QCOMPARE(world.perform(*next), Outcome::Done);
                    QCOMPARE(eventsIn(world), events + 1);
                }();
                return result.isOver;
            });
        }
    }

    void aFormerContentIsKeptOrToldAndPutBackWhole_data() { addFailures(); }
    void aFormerContentIsKeptOrToldAndPutBackWhole()
    {
        const QString name = u"資料.bin"_s;
        const QByteArray former = QByteArray("former ").repeated(40'000);
        const QByteArray fresh = QByteArray("fresh ").repeated(50'000);
        Step step{.kind = Step::Kind::RegisterFile,
                  .identifier = u"F-001231-001"_s,
                  .other = {},
                  .name = name,
                  .content = u"未入力"_s,
                  .many = {}};
        for (const bool putsBack : {false, true}) {
            atEveryCall([&](int n) {
                Fresh place(m_prepared.path());
                FaultWorld& world = place.world;
                const QString stored = world.path(titles::FileFolder + u'/' + name);
                bool isOver = false;
                [&] {
                    const auto registerContent = [&](const QString& identifier, const QByteArray& content) {
                        put(world.path(name), content);
                        step.identifier = identifier;
                        return world.perform(step);
                    };
                    QCOMPARE(registerContent(u"F-001231-001"_s, former), Outcome::Done);
                    const auto replace = [&] { return registerContent(u"F-001231-002"_s, fresh); };
                    const auto putBack = [&] {
                        return world.perform([&] {
                            LostThings things(world.session);
                            things.ask({.text = {}, .kind = EventKind::FileReplaced});
                            things.readOn();
                            return things.count() > 0 && PutBack(world.session, things, 0).has_value();
                        });
                    };
                    if (putsBack)
                        QCOMPARE(replace(), Outcome::Done);
                    put(world.path(name), fresh);
                    step.identifier = u"F-001231-002"_s;
                    const Attempt result =
                        attempt(n, world, [&] { return putsBack ? putBack() : world.perform(step); });
                    isOver = result.isOver;
                    // A history that cannot be read lists nothing to be put back; then nothing is asked for either.
                    const bool isDone = result.outcome == Outcome::Done;
                    QVERIFY2(isDoneOrTold(result) || (putsBack && result.outcome == Outcome::Silent),
                             qPrintable(result.about));
                    const QByteArray content = contentOf(stored);
                    QVERIFY2(content == former || content == fresh, qPrintable(result.about));
                    if (isDone)
                        QVERIFY2(content == (putsBack ? former : fresh), qPrintable(result.about));
                    // Whichever is there, the other one is kept or it has been told that it is not.
                    const kept::FileContents contents(world.place());
                    const QByteArray other = content == former ? fresh : former;
                    const QByteArray hash = QCryptographicHash::hash(other, QCryptographicHash::Sha256);
                    if (putsBack || content == fresh)
                        QVERIFY2(contents.find(hash) || logTells(world, u"History"_s),
                                 qPrintable(result.about));
                    if (content == fresh)
                        QVERIFY2(eventsIn(world) == 1 || logTells(world, u"History"_s),
                                 qPrintable(result.about));
                }();
                return isOver;
            });
        }
    }

    void aCopyIsMadeWholeOrNotAtAll_data() { addFailures(); }
    void aCopyIsMadeWholeOrNotAtAll()
    {
        atEveryCall([&](int n) {
            Fresh fresh(m_prepared.path());
            FaultWorld& world = fresh.world;
            bool isOver = false;
            [&] {
                QCOMPARE(kept::makeCopy(copyOrder(world, 1)), kept::CopyOutcome::Made);
                const auto step = randomStep(Step::Kind::Update, m_random, m_model, {});
                QCOMPARE(world.perform(*step), Outcome::Done);
                put(world.path(titles::FileFolder + u'/' + sourceFile(0)), "changed");
                const Attempt result = attempt(n, world, [&] {
                    return world.perform(
                        [&] { return kept::makeCopy(copyOrder(world, 2)) == kept::CopyOutcome::Made; });
                });
                isOver = result.isOver;
                QVERIFY2(isDoneOrTold(result), qPrintable(result.about));
                const std::size_t copies = kept::listCopies(world.place()).size();
                QVERIFY2(copies == 2 || (copies == 1 && result.outcome != Outcome::Done),
                         qPrintable(result.about));
                QString problem = problemOfCopies(world.place());
                QVERIFY2(problem.isEmpty(), qPrintable(result.about + problem));
                // And what is too old goes without taking anything else with it.
                kept::prune(world.place(), QDateTime::currentMSecsSinceEpoch() + qint64{10'000'000'000});
                QCOMPARE(kept::makeCopy(copyOrder(world, 3)), kept::CopyOutcome::Made);
                problem = problemOfCopies(world.place());
                QVERIFY2(problem.isEmpty(), qPrintable(result.about + problem));
                QCOMPARE(kept::listCopies(world.place()).size(), copies + 1);
            }();
            return isOver;
        });
    }

    void whatIsNamedOutlivesAPruningThatFails_data() { addFailures(); }
    void whatIsNamedOutlivesAPruningThatFails()
    {
        Fresh fresh(m_prepared.path());
        FaultWorld& world = fresh.world;
        QCOMPARE(kept::makeCopy(copyOrder(world, 1)), kept::CopyOutcome::Made);
        const auto step = randomStep(Step::Kind::Delete, m_random, m_model, {});
        QCOMPARE(world.perform(*step), Outcome::Done);
        atEveryCall([&](int n) {
            const Attempt result = attempt(n, world, [&] {
                constexpr qint64 Week = qint64{7} * 24 * 60 * 60 * 1000;
                kept::prune(world.place(), QDateTime::currentMSecsSinceEpoch() + Week);
                return Outcome::Done;
            });
            const QString problem = problemOfCopies(world.place());
            if (!problem.isEmpty() || kept::listCopies(world.place()).size() != 1 || eventsIn(world) != 1)
                QTest::qFail(qPrintable(result.about + problem), __FILE__, __LINE__);
            return result.isOver;
        });
    }

    void aCopyIsTakenOutWholeOrNotAtAll_data() { addFailures(); }
    void aCopyIsTakenOutWholeOrNotAtAll()
    {
        Fresh fresh(m_prepared.path());
        FaultWorld& world = fresh.world;
        QCOMPARE(kept::makeCopy(copyOrder(world, 1)), kept::CopyOutcome::Made);
        atEveryCall([&](int n) {
            QTemporaryDir target;
            const QString newFile = target.filePath(u"QUILLON.mdb"_s);
            std::optional<TakenOutFiles> files;
            const Attempt result = attempt(n, world, [&] {
                return world.perform([&] {
                    const auto copies = kept::listCopies(world.place());
                    if (!copies.empty())
                        files = TakeOutCopy(world.session, copies.front(), newFile);
                    return files.has_value();
                });
            });
            [&] {
                QVERIFY2(isDoneOrTold(result) || result.outcome == Outcome::Silent, qPrintable(result.about));
                if (files) {
                    QString why;
                    const auto actual = readModel(newFile, why);
                    QVERIFY2(actual && *actual == m_model, qPrintable(result.about + why));
                }
                // Of the files as many as are told, each as a whole.
                const QFileInfoList written =
                    QDir(target.filePath(titles::FileFolder)).entryInfoList(QDir::Files);
                for (const QFileInfo& info : written)
                    QCOMPARE(contentOf(info.filePath()),
                             contentOf(world.path(titles::FileFolder + u'/' + info.fileName())));
                if (result.outcome == Outcome::Done)
                    QVERIFY2(files && written.size() == files->written, qPrintable(result.about));
                const QString problem = problemOfCopies(world.place());
                QVERIFY2(problem.isEmpty(), qPrintable(result.about + problem));
            }();
            return result.isOver;
        });
    }

    void whatIsPutBackIsBackOrTold_data() { addFailures(); }
    void whatIsPutBackIsBackOrTold()
    {
        for (const Step::Kind kind : {Step::Kind::Update, Step::Kind::Delete}) {
            const auto step = randomStep(kind, m_random, m_model, {});
            atEveryCall([&](int n) {
                Fresh fresh(m_prepared.path());
                FaultWorld& world = fresh.world;
                bool isOver = false;
                [&] {
                    QCOMPARE(world.perform(*step), Outcome::Done);
                    const Attempt result = attempt(n, world, [&] {
                        return world.perform([&] {
                            LostThings things(world.session);
                            things.readOn();
                            return things.count() > 0 && PutBack(world.session, things, 0).has_value();
                        });
                    });
                    isOver = result.isOver;
                    QVERIFY2(isDoneOrTold(result) || result.outcome == Outcome::Silent,
                             qPrintable(result.about));
                    const auto actual = modelOf(world, result.about);
                    QVERIFY(actual);
                    const bool isBack = actual->data == m_model.data;
                    QVERIFY2(isBack || (*actual == after(*step, m_model) && result.outcome != Outcome::Done),
                             qPrintable(result.about));
                    // As a whole, with what hung on it.
                    if (isBack)
                        QVERIFY2(*actual == m_model, qPrintable(result.about + difference(*actual, m_model)));
                    QVERIFY2(eventsIn(world) >= 1, qPrintable(result.about));
                }();
                return isOver;
            });
        }
    }
};

QTEST_GUILESS_MAIN(TestFailingKeeping)
#include "test_failing_keeping.moc"
