// Every call to the system fails while something comes in from outside: it is in as a whole or not at all, and that is
// told.
#include "app/base/titles.h"
#include "exchange/archive.h"
#include "tests/faults/failing_attempts.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestFailingImports : public QObject, private FailingAttempts
{
    Q_OBJECT

private:
    QTemporaryDir m_prepared;
    Model m_model;

private Q_SLOTS:
    void initTestCase() { m_model = prepareFolder(m_prepared.path()); }
    void cleanupTestCase() const { qInfo("%d calls failed", m_failures); }

    void anArchiveComesInWholeOrNotAtAll_data() { addFailures(); }
    void anArchiveComesInWholeOrNotAtAll()
    {
        QTemporaryDir outside;
        const QString archive = outside.filePath(u"archive"_s);
        {
            FaultWorld world(m_prepared.path());
            QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
            exchange::exportArchive(world.session, archive);
        }
        atEveryCall([&](int n) {
            QTemporaryDir folder;
            FaultWorld world(folder.path());
            bool isOver = false;
            [&] {
                QCOMPARE(world.create(u"QUILLON.mdb"_s), Outcome::Done);
                const Attempt result = attempt(n, world, [&] {
                    return world.perform([&] {
                        exchange::importArchive(world.session, archive);
                        return true;
                    });
                });
                isOver = result.isOver;
                QVERIFY2(isDoneOrTold(result), qPrintable(result.about));
                const auto actual = modelOf(world, result.about);
                QVERIFY(actual);
                const bool isIn = *actual == m_model;
                QVERIFY2(isIn || (*actual == Model() && result.outcome != Outcome::Done),
                         qPrintable(result.about + difference(*actual, m_model)));
                const QString files = filesProblem(folder.path(), *actual);
                QVERIFY2(files.isEmpty(), qPrintable(result.about + files));
                // What did not come in can come in the next time.
                if (!isIn) {
                    const Outcome again = world.perform([&] {
                        exchange::importArchive(world.session, archive);
                        return true;
                    });
                    QVERIFY2(again == Outcome::Done,
                             qPrintable(result.about + u" / "_s + world.told().join(u" / "_s)));
                    QCOMPARE(filesProblem(folder.path(), m_model), QString());
                }
            }();
            return isOver;
        });
    }
};

QTEST_GUILESS_MAIN(TestFailingImports)
#include "test_failing_imports.moc"
