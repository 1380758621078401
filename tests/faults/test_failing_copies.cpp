// Every call of the program's own to the system fails while a file is copied into the folder of registered files: the
// registration tells it or is done all the same; what has the name is the former file or the new one, as a whole, and
// what the row says; the next registration tidies whatever could not be tidied.
#include "app/base/titles.h"
#include "tests/faults/failing_calls.h"
#include "tests/faults/fault_world.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <array>
#include <cerrno>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

using Outcome = FaultWorld::Outcome;

class TestFailingCopies : public QObject
{
    Q_OBJECT

private:
    std::mt19937 m_random{seedOfRun()};

    // The numbers of calls to be tried: every one in a long run, else every few.
    static bool isLong() { return numberFromEnvironment("QUILLON_FAULTS_LONG", 0) != 0; }
    int first() { return isLong() ? 1 : 1 + static_cast<int>(m_random() % 5); }
    int next(int n) { return n + (isLong() ? 1 : 1 + static_cast<int>(m_random() % 60)); }

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void put(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no file could be made");
    }
    static Step registration(const QString& identifier, const QString& name)
    {
        return {.kind = Step::Kind::RegisterFile,
                .identifier = identifier,
                .other = {},
                .name = name,
                .content = u"未入力"_s,
                .many = {}};
    }

private Q_SLOTS:
    void aRegistrationIsDoneOrTold_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("stays");
        QTest::addColumn<bool>("replaces");
        const std::array errors{
            std::pair("EIO", EIO),       std::pair("ENOSPC", ENOSPC),
            std::pair("EDQUOT", EDQUOT), std::pair("EINTR", EINTR),
            std::pair("EMFILE", EMFILE), std::pair("short write", FailingCalls::ShortWrite)};
        for (const auto& [name, error] : errors) {
            for (const bool stays : {false, true}) {
                for (const bool replaces : {false, true}) {
                    // A call that is interrupted for ever is asked again for ever, as it should be.
                    if (error == EINTR && stays)
                        continue;
                    QTest::addRow("%s %s, %s", name, stays ? "from then on" : "once",
                                  replaces ? "replacing" : "new")
                        << error << stays << replaces;
                }
            }
        }
    }
    void aRegistrationIsDoneOrTold()
    {
        QFETCH(const int, error);
        QFETCH(const bool, stays);
        QFETCH(const bool, replaces);
        const QString name = u"資料.bin"_s;
        const QByteArray former = QByteArray("former ").repeated(400'000); // several pieces
        const QByteArray fresh = QByteArray("fresh ").repeated(500'000);
        for (int n = first();; n = next(n)) {
            QTemporaryDir folder;
            Model model = prepareFolder(folder.path());
            FaultWorld world(folder.path());
            QCOMPARE(world.open(u"QUILLON.mdb"_s), Outcome::Done);
            const QString stored = world.path(titles::FileFolder + u'/' + name);
            if (replaces) {
                put(world.path(name), former);
                const Step before = registration(u"F-001231-001"_s, name);
                QCOMPARE(world.perform(before), Outcome::Done);
                model = after(before, model);
            }
            put(world.path(name), fresh);
            const Step step = registration(u"F-001231-002"_s, name);

            FailingCalls::failAt(n, error,
                                 stays ? FailingCalls::Duration::FromThenOn : FailingCalls::Duration::Once);
            const Outcome outcome = world.perform(step);
            const bool isOver = FailingCalls::heal() < n;
            const char* const call = FailingCalls::failedCall();
            const QString about = u"call %1 (%2): %3"_s.arg(n).arg(
                QString::fromLatin1(call != nullptr ? call : "none"), world.told().join(u" / "_s));
            QVERIFY2(outcome == Outcome::Done || (outcome == Outcome::Failed && call != nullptr),
                     qPrintable(about));
            if (error == FailingCalls::ShortWrite)
                QVERIFY2(outcome == Outcome::Done, qPrintable(about));

            QString why;
            const auto actual = readModel(world.path(u"QUILLON.mdb"_s), why);
            QVERIFY2(actual, qPrintable(about + why));
            const bool isRegistered = *actual == after(step, model);
            QVERIFY2(isRegistered || (*actual == model && outcome != Outcome::Done), qPrintable(about));
            // Whole at every moment, whichever it is.
            if (QFile::exists(stored)) {
                const QByteArray content = contentOf(stored);
                QVERIFY2(content == fresh || (replaces && content == former), qPrintable(about));
            }

            // The next registration of this or another program settles what was left.
            QCOMPARE(world.perform(registration(u"F-001231-003"_s, sourceFile(0))), Outcome::Done);
            if (isRegistered)
                QVERIFY2(contentOf(stored) == fresh, qPrintable(about));
            else if (replaces)
                QVERIFY2(contentOf(stored) == former, qPrintable(about));
            const QStringList left = QDir(world.path(titles::FileFolder))
                                         .entryList({u".quillon-*"_s}, QDir::AllEntries | QDir::Hidden);
            QVERIFY2(left.isEmpty(), qPrintable(about + u" leaves "_s + left.join(u", "_s)));
            if (isOver)
                break;
            if (call != nullptr)
                ++m_failures;
        }
    }

    void cleanupTestCase() const { qInfo("%d calls failed", m_failures); }

private:
    int m_failures = 0;
};

QTEST_GUILESS_MAIN(TestFailingCopies)
#include "test_failing_copies.moc"
