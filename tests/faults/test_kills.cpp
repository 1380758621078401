// A program is killed at random moments of its work, again and again, on one file: everything that it had reported as
// done is in it, the step it was at is there as a whole or not at all, and the next program goes on from there.
#include "app/base/titles.h"
#include "tests/faults/children.h"
#include "tests/faults/fault_world.h"

#include <QDir>
#include <QTest>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

using Outcome = FaultWorld::Outcome;

class TestKills : public QObject
{
    Q_OBJECT

private:
    static constexpr int StepsOfOneLife = 60;
    enum Message { CannotOpen = -1, Failed = -2, Opened = 0 }; // else how many steps are done

    std::mt19937 m_random;

    /// What a program does as long as it lives: the steps that a seed makes of what there is.
    static void live(const QString& folder, const std::vector<Step>& steps, const Child::Tell& tell)
    {
        FaultWorld world(folder);
        if (world.open(u"QUILLON.mdb"_s) != Outcome::Done) {
            tell(CannotOpen);
            return;
        }
        tell(Opened);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            if (world.perform(steps[i]) != Outcome::Done) {
                std::fprintf(stderr, "%s: %s\n", qPrintable(steps[i].described()),
                             qPrintable(world.told().join(u'\n')));
                tell(Failed);
                return;
            }
            tell(static_cast<int>(i) + 1);
        }
    }

private Q_SLOTS:
    void whatWasReportedAsDoneOutlivesTheProgram()
    {
        m_random.seed(seedOfRun());
        QTemporaryDir folder;
        Model model = prepareFolder(folder.path());
        const int kills = numberFromEnvironment("QUILLON_KILLS", 60);
        int inTheMiddle = 0;
        int steps = 0;
        for (int i = 0; i < kills; ++i) {
            std::vector<Step> life;
            std::vector<Model> states{model};
            for (int n = 0; n < StepsOfOneLife; ++n) {
                life.push_back(randomStep(m_random, states.back(), {}));
                states.push_back(after(life.back(), states.back()));
            }
            std::size_t done = 0;
            {
                Child child([&](const Child::Tell& tell) { live(folder.path(), life, tell); });
                // It lives for a number of messages and a moment, so that it is met in openings and in steps alike.
                const auto messages = m_random() % 25;
                auto heard = Child::Heard::Number;
                int number = 0;
                const auto take = [&] {
                    QVERIFY2(number >= 0, qPrintable(u"kill %1: message %2"_s.arg(i).arg(number)));
                    done = static_cast<std::size_t>(number);
                };
                for (std::size_t n = 0; n < messages && heard == Child::Heard::Number; ++n) {
                    heard = child.hear(number);
                    if (heard == Child::Heard::Number)
                        take();
                }
                for (int left = static_cast<int>(m_random() % 3000);
                     left > 0 && heard != Child::Heard::End;) {
                    const int piece = std::min(left, 200);
                    heard = child.hear(number, piece);
                    left -= piece;
                    if (heard == Child::Heard::Number)
                        take();
                }
                child.kill();
                child.finish();
                while (child.hear(number) == Child::Heard::Number)
                    take();
                if (QTest::currentTestFailed())
                    return;
            }
            steps += static_cast<int>(done);
            if (QFile::exists(folder.filePath(u"QUILLON.mdb-journal"_s)))
                ++inTheMiddle;
            FaultWorld next(folder.path());
            QVERIFY2(next.open(u"QUILLON.mdb"_s) == Outcome::Done, qPrintable(next.told().join(u'\n')));
            const Model seen = next.seen();
            next.close();
            QString why;
            const auto actual = readModel(folder.filePath(u"QUILLON.mdb"_s), why);
            QVERIFY2(actual, qPrintable(why));
            const bool isNext = done + 1 < states.size() && *actual == states[done + 1];
            QVERIFY2(*actual == states[done] || isNext,
                     qPrintable(u"kill %1 after %2 steps, at %3: "_s.arg(i).arg(done).arg(
                                    done < life.size() ? life[done].described() : u"the end"_s) +
                                difference(*actual, states[done])));
            QVERIFY2(seen == *actual, qPrintable(difference(seen, *actual)));
            const QString files = filesProblem(folder.path(), *actual);
            QVERIFY2(files.isEmpty(), qPrintable(files));
            model = *actual;
        }
        qInfo("%d kills, %d of them with a journal left, %d steps done", kills, inTheMiddle, steps);
    }
};

QTEST_GUILESS_MAIN(TestKills)
#include "test_kills.moc"
