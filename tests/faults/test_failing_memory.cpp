// Memory runs out in the middle of registering, filing, linking and deleting, few data and many: the operation tells it
// or is done, the file holds all of it or nothing, and the program goes on.
#include "app/base/error.h"
#include "app/base/titles.h"
#include "store/database.h"
#include "tests/faults/fault_world.h"
#include "tests/support/failing_memory.h"

#include <QFile>
#include <QTest>

#include <sqlite3.h>

#include <array>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

using Outcome = FaultWorld::Outcome;

class TestFailingMemory : public QObject
{
    Q_OBJECT

private:
    static constexpr int Many = 9000; // so many need large blocks wherever they are gathered
    static inline const QString Hub = u"M-991231-100"_s;
    static inline const QString Full = u"Z"_s; // a category with all of them

    QTemporaryDir m_prepared; // what a test begins with
    Model m_few;
    Model m_many;
    std::mt19937 m_random;
    int m_refusals = 0;

    static bool isLong() { return numberFromEnvironment("QUILLON_FAULTS_LONG", 0) != 0; }
    static QString manyth(int number) { return u"M-001231-%1"_s.arg(number); }

    static void execute(sqlite3* file, const QByteArray& sql)
    {
        char* message = nullptr;
        if (sqlite3_exec(file, sql.constData(), nullptr, nullptr, &message) != SQLITE_OK)
            qFatal("%s: %s", sql.constData(), message);
    }
    /// Many data, all of them linked with one and in one category.
    static void fill(const QString& path)
    {
        sqlite3* file = nullptr;
        sqlite3_open_v2(path.toUtf8().constData(), &file, SQLITE_OPEN_READWRITE, nullptr);
        execute(file, "BEGIN");
        execute(file, "INSERT INTO Main (Name, Object_ID, Explanation) VALUES ('hub', '" + Hub.toUtf8() +
                          "', '" + QByteArray(60'000, 'x') + "')");
        execute(file, "INSERT INTO Category_ID (Category_ID, Name) VALUES ('Z', 'full')");
        const QByteArray numbers =
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " +
            QByteArray::number(Many - 1) + ") ";
        execute(file, numbers + "INSERT INTO Main (Name, Object_ID, Explanation) "
                                "SELECT 'n' || i, 'M-001231-' || i, 'x' FROM n");
        execute(file, numbers + "INSERT INTO Link (Link_Object_ID, Object_ID) SELECT '" + Hub.toUtf8() +
                          "', 'M-001231-' || i FROM n");
        execute(file, numbers + "INSERT INTO Category (Category_ID, Object_ID) "
                                "SELECT 'Z', 'M-001231-' || i FROM n");
        execute(file, "COMMIT");
        sqlite3_close(file);
    }

    /// The registered files, and those that can be.
    void prepareFiles(const QString& folder) const
    {
        QDir(folder).mkdir(titles::FileFolder);
        for (const QString& in : {QString(), titles::FileFolder + u'/'}) {
            for (const QString& name : QDir(m_prepared.filePath(in)).entryList({u"*.txt"_s}, QDir::Files))
                QVERIFY(QFile::copy(m_prepared.filePath(in + name), folder + u'/' + in + name));
        }
    }

    /// Performs a step again and again, each time with the next block of memory missing.
    void runOutEverywhere(const Step& step, const QString& database, const Model& before, std::size_t large)
    {
        const Model whole = after(step, before);
        for (const auto duration : {FailingMemory::Duration::FromThenOn, FailingMemory::Duration::Once}) {
            if (!isLong() && m_random() % 2 == 0)
                continue;
            QTemporaryDir folder;
            prepareFiles(folder.path());
            const QString path = folder.filePath(u"QUILLON.mdb"_s);
            for (int first = isLong() ? 0 : static_cast<int>(m_random() % 3);;
                 first += isLong() ? 1 : 1 + static_cast<int>(m_random() % 12)) {
                QFile::remove(path);
                QVERIFY(QFile::copy(m_prepared.filePath(database), path));
                FaultWorld world(folder.path());
                world.keep();
                QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
                Outcome outcome = Outcome::Done;
                bool isRefused = false;
                {
                    const FailingMemory scarce(first, duration, large);
                    outcome = world.perform(step);
                    isRefused = FailingMemory::hasRefused();
                }
                const QString about = u"%1, block %2 of %3 bytes: %4"_s.arg(step.described().left(60))
                                          .arg(first)
                                          .arg(large)
                                          .arg(world.told().join(u" / "_s));
                m_refusals += isRefused ? 1 : 0;
                // As for any failure, and by its own sentence.
                QVERIFY2(outcome == Outcome::Done || (outcome == Outcome::Failed && isRefused),
                         qPrintable(about));
                if (outcome == Outcome::Failed) {
                    QVERIFY2(world.told().join(QString()).contains(standardDescription(errors::OutOfMemory)),
                             qPrintable(about));
                    QVERIFY2(world.told().join(QString()).contains(u"対処不能なエラーが発生しました。"_s) ||
                                 world.told().join(QString()).startsWith(u"EXPLANATION : "_s),
                             qPrintable(about));
                }
                QString why;
                const auto actual = readModel(path, why);
                QVERIFY2(actual, qPrintable(about + why));
                const bool isPossible =
                    *actual == whole || (outcome == Outcome::Failed &&
                                         (*actual == before || isPossibleInPart(step, before, *actual)));
                if (!isPossible)
                    QFAIL(qPrintable(about + difference(*actual, outcome == Outcome::Done ? whole : before)));
                QVERIFY2(world.seen() == *actual, qPrintable(about));
                const QString files = filesProblem(folder.path(), *actual);
                QVERIFY2(files.isEmpty(), qPrintable(about + files));
                const auto next = randomStep(Step::Kind::Update, m_random, m_few, {});
                QVERIFY2(world.perform(*next) == Outcome::Done || !actual->data.contains(next->identifier),
                         qPrintable(about));
                if (!isRefused)
                    break;
            }
        }
    }
    /// Of thousands of parts nobody tries all choices.
    static bool isPossibleInPart(const Step& step, const Model& before, const Model& actual)
    {
        return step.many.size() <= 8 && isPossibleAfterFailure(step, before, actual);
    }

private Q_SLOTS:
    void initTestCase()
    {
#ifndef QUILLON_MEMORY_CAN_FAIL
        QSKIP("Memory cannot be made to fail here.");
#endif
        m_random.seed(seedOfRun());
        m_few = prepareFolder(m_prepared.path());
        QFile::copy(m_prepared.filePath(u"QUILLON.mdb"_s), m_prepared.filePath(u"MANY.mdb"_s));
        fill(m_prepared.filePath(u"MANY.mdb"_s));
        QString why;
        m_many = readModel(m_prepared.filePath(u"MANY.mdb"_s), why).value();
    }
    void cleanupTestCase() const
    {
        qInfo("%d times memory ran out", m_refusals);
    }

    void aStepIsDoneOrTold_data()
    {
        QTest::addColumn<int>("kind");
        for (const Step::Kind kind :
             {Step::Kind::Register, Step::Kind::RegisterFile, Step::Kind::RegisterToLink,
              Step::Kind::MoveDown, Step::Kind::Update, Step::Kind::Delete, Step::Kind::DeleteMany,
              Step::Kind::Link, Step::Kind::Unlink, Step::Kind::File, Step::Kind::FileMany,
              Step::Kind::Unfile, Step::Kind::AddCategory, Step::Kind::RenameCategory,
              Step::Kind::DeleteCategory})
            QTest::addRow("%d", static_cast<int>(kind)) << static_cast<int>(kind);
    }
    void aStepIsDoneOrTold()
    {
        QFETCH(const int, kind);
        constexpr std::size_t Page = 4000; // what the engine holds a part of the file in
        const auto step = randomStep(static_cast<Step::Kind>(kind), m_random, m_few, {});
        if (step)
            runOutEverywhere(*step, u"QUILLON.mdb"_s, m_few, Page);
    }

    void aStepWithManyIsDoneOrTold_data()
    {
        QTest::addColumn<int>("kind");
        for (const Step::Kind kind : {Step::Kind::Delete, Step::Kind::DeleteMany, Step::Kind::Link,
                                      Step::Kind::FileMany, Step::Kind::DeleteCategory})
            QTest::addRow("%d", static_cast<int>(kind)) << static_cast<int>(kind);
    }
    void aStepWithManyIsDoneOrTold()
    {
        QFETCH(const int, kind);
        if (!isLong() && m_random() % 3 != 0)
            return; // one of three is enough for every day
        Step step{.kind = static_cast<Step::Kind>(kind),
                  .identifier = Hub,
                  .other = m_few.categories.begin()->first,
                  .name = {},
                  .content = {},
                  .many = {}};
        switch (step.kind) {
        case Step::Kind::DeleteCategory:
            step.identifier = Full;
            break;
        case Step::Kind::Link:
            step.other = m_few.data.begin()->first;
            break;
        case Step::Kind::DeleteMany:
        case Step::Kind::FileMany:
            for (int i = 0; i < Many; ++i)
                step.many << manyth(i);
            break;
        default:
            break;
        }
        runOutEverywhere(step, u"MANY.mdb"_s, m_many, FailingMemory::Large);
    }
};

QTEST_GUILESS_MAIN(TestFailingMemory)
#include "test_failing_memory.moc"
