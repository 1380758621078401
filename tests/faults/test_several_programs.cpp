// Two and three programs work with one file at the same time: nothing of what one has done is lost or torn by another.
#include "core/data_entry.h"
#include "store/data_kinds.h"
#include "store/identifiers.h"
#include "tests/faults/children.h"
#include "tests/faults/fault_world.h"

#include <QTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <set>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

using Outcome = FaultWorld::Outcome;

class TestSeveralPrograms : public QObject
{
    Q_OBJECT

private:
    enum Message { CannotOpen = -1, Failed = -2, Refused = -3, Opened = 0 }; // else how many steps are done

    /// Performs steps that touch nothing of the other programs. One that is refused, because another program held the
    /// file for too long, is tried again: it must not have done a part.
    static void work(const QString& folder, const std::vector<Step>& steps, const Child::Tell& tell)
    {
        FaultWorld world(folder);
        if (world.open(u"QUILLON.mdb"_s) != Outcome::Done) {
            std::fprintf(stderr, "%s\n", qPrintable(world.told().join(u'\n')));
            tell(CannotOpen);
            return;
        }
        tell(Opened);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            auto outcome = world.perform(steps[i]);
            for (; outcome == Outcome::Refused; outcome = world.perform(steps[i]))
                tell(Refused);
            if (outcome != Outcome::Done) {
                std::fprintf(stderr, "%s: %s\n", qPrintable(steps[i].described()),
                             qPrintable(world.told().join(u'\n')));
                tell(Failed);
                return;
            }
            tell(static_cast<int>(i) + 1);
        }
    }

    /// Registers data, each with the identifier that was the next free one when it was begun: as
    /// often as not another program has it by then.
    static void registerMany(const QString& folder, int program, int count, const Child::Tell& tell)
    {
        FaultWorld world(folder);
        Outcome opened = world.open(u"QUILLON.mdb"_s);
        while (opened == Outcome::Refused)
            opened = world.open(u"QUILLON.mdb"_s);
        if (opened != Outcome::Done) {
            std::fprintf(stderr, "%s\n", qPrintable(world.told().join(u'\n')));
            tell(CannotOpen);
            return;
        }
        tell(Opened);
        for (int i = 0; i < count; ++i) {
            const QString text = u"%1 の %2"_s.arg(program).arg(i);
            const DataKind& kind = *kindOf(i % 2 == 0 ? u"M"_s : u"R"_s);
            // Whatever another program kept the file from for too long is tried again, as a person would.
            const auto performAtLast = [&](const std::function<bool()>& operation) {
                Outcome outcome = Outcome::Refused;
                while (outcome == Outcome::Refused)
                    outcome = world.perform(operation);
                return outcome;
            };
            QString shown;
            Outcome outcome = performAtLast([&] {
                shown = CreateObject_ID(world.session, QString(kind.letter));
                return !shown.isEmpty();
            });
            if (outcome == Outcome::Done)
                outcome = performAtLast([&] {
                    return RegisterDatum(world.session, kind, shown, {.name = text, .content = text}, {})
                        .has_value();
                });
            if (outcome != Outcome::Done) {
                std::fprintf(stderr, "%s: %s\n", qPrintable(shown), qPrintable(world.told().join(u'\n')));
                tell(Failed);
                return;
            }
            tell(i + 1);
        }
    }

private Q_SLOTS:
    void noTwoOfThemGiveOutTheSameIdentifier()
    {
        constexpr int Programs = 3;
        constexpr int Most = 600; // a day has 999 identifiers of each of the two kinds
        const int count = std::min(Most, numberFromEnvironment("QUILLON_STEPS_AT_ONCE", 60));
        QTemporaryDir folder;
        const Model begun = prepareFolder(folder.path());
        std::vector<std::unique_ptr<Child>> children;
        for (int program = 0; program < Programs; ++program)
            children.push_back(std::make_unique<Child>([&, program](const Child::Tell& tell) {
                registerMany(folder.path(), program, count, tell);
            }));
        for (const auto& child : children) {
            int number = 0;
            int done = 0;
            while (child->hear(number) == Child::Heard::Number) {
                QVERIFY2(number >= 0, qPrintable(QString::number(number)));
                done = number;
            }
            QCOMPARE(done, count);
            QVERIFY(child->finish());
        }
        QString why;
        const auto actual = readModel(folder.filePath(u"QUILLON.mdb"_s), why);
        QVERIFY2(actual, qPrintable(why));
        // By identifier: had one been given out twice, one of both would be missing.
        QCOMPARE(actual->data.size(),
                 begun.data.size() + std::size_t{Programs} * static_cast<std::size_t>(count));
        std::set<QString> names;
        for (const auto& [identifier, datum] : actual->data) {
            QVERIFY(begun.data.contains(identifier) || names.insert(datum.name).second);
            QVERIFY(begun.data.contains(identifier) || datum.name == datum.content);
        }
    }

    void noneLosesWhatAnotherHasDone_data()
    {
        QTest::addColumn<int>("programs");
        QTest::newRow("two") << 2;
        QTest::newRow("three") << 3;
    }
    void noneLosesWhatAnotherHasDone()
    {
        QFETCH(const int, programs);
        std::mt19937 random(seedOfRun());
        QTemporaryDir folder;
        const Model begun = prepareFolder(folder.path(), programs);
        const int count = numberFromEnvironment("QUILLON_STEPS_AT_ONCE", 80);
        std::vector<std::vector<Step>> lives;
        Model expected = begun;
        for (int program = 0; program < programs; ++program) {
            lives.emplace_back();
            // Each sees what the others do, but has data, links and categories of its own: in whatever order their
            // steps come, they end in the same.
            for (int i = 0; i < count; ++i) {
                lives.back().push_back(randomStep(random, expected, {program}));
                expected = after(lives.back().back(), expected);
            }
        }
        std::vector<std::unique_ptr<Child>> children;
        for (const auto& life : lives)
            children.push_back(
                std::make_unique<Child>([&](const Child::Tell& tell) { work(folder.path(), life, tell); }));
        int refused = 0;
        for (const auto& child : children) {
            int number = 0;
            int done = 0;
            while (child->hear(number) == Child::Heard::Number) {
                QVERIFY2(number >= Refused && number != Failed && number != CannotOpen,
                         qPrintable(QString::number(number)));
                if (number == Refused)
                    ++refused;
                else
                    done = number;
            }
            QCOMPARE(done, count);
            QVERIFY(child->finish());
        }
        QString why;
        const auto actual = readModel(folder.filePath(u"QUILLON.mdb"_s), why);
        QVERIFY2(actual, qPrintable(why));
        QCOMPARE(difference(*actual, expected), QString());
        const QString files = filesProblem(folder.path(), *actual);
        QVERIFY2(files.isEmpty(), qPrintable(files));
        qInfo("%d steps of %d programs, %d refused for the time being", programs * count, programs, refused);
    }
};

QTEST_GUILESS_MAIN(TestSeveralPrograms)
#include "test_several_programs.moc"
