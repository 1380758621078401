#include "app/base/error.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/compare_text.h"
#include "tests/support/system_calls.h"
#include "tests/support/test_world.h"

#include <QtTest>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Quota =
    u"利用できるディスク容量の上限に達しました。不要なファイルを削除してからやり直してください。"_s;
const QString TooManyFiles =
    u"同時に開けるファイルの数の上限に達しました。画面や他のアプリケーションを閉じてからやり直してください。"_s;

/// What an operation fails with: its number and its sentence.
template <class Operation> QString failureOf(Operation&& operation)
{
    try {
        operation();
    } catch (const Error& error) {
        return QString::number(error.number) + u' ' + error.description;
    }
    return u"nothing"_s;
}

#ifdef Q_OS_UNIX
QString standard(qint32 number)
{
    return QString::number(number) + u' ' + standardDescription(number);
}
#endif

} // namespace

/// What the system says of a file is what the person is told.
class TestTroubles : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> m_world;
    QString m_path;

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<TestWorld>();
        m_path = m_world->createDatabase();
        const auto rows = RecordSet::openTable(Database::open(m_path), schema::RefDoc());
        for (const QString& number : {u"1"_s, u"2"_s})
            TestWorld::addRow(rows, {u"a"_s + number, u"R-991231-00"_s + number, QString(20'000, u'水')});
    }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

#ifdef Q_OS_UNIX
    void aDiskThatCannotBeReadForAMomentIsNoDamage()
    {
        int reads = 0;
        int failing = 0; // the number of the read that fails
        int failures = 0;
        const SystemCalls calls([&](const QByteArray& call, const QByteArray&) {
            return call == "read" && ++reads == failing ? EIO : 0;
        });
        for (failing = 1;; ++failing) {
            reads = 0;
            const QString told = failureOf([&] {
                const auto rows = RecordSet::openTable(Database::open(m_path), schema::RefDoc());
                QCOMPARE(TestWorld::rowsOf(rows).size(), 2);
            });
            if (reads < failing)
                break;
            if (told == u"nothing")
                continue; // a mere precaution met with it: every row was read
            ++failures;
            QVERIFY(compareText(told, standard(errors::PathFileAccess)));
        }
        QVERIFY(failures > 10);
    }

    void aFailureOfTheSystemIsToldAsWhatItIs_data()
    {
        QTest::addColumn<QByteArray>("call");
        QTest::addColumn<int>("failure");
        QTest::addColumn<QString>("told");
        for (const QByteArray& call : {"write"_ba, "open"_ba}) {
            QTest::addRow("%s, no room", call.constData()) << call << ENOSPC << standard(errors::DiskFull);
            QTest::addRow("%s, quota", call.constData()) << call << EDQUOT << u"61 "_s + Quota;
            QTest::addRow("%s, memory", call.constData()) << call << ENOMEM << standard(errors::OutOfMemory);
        }
        QTest::newRow("open, too many files") << "open"_ba << EMFILE << u"75 "_s + TooManyFiles;
        QTest::newRow("open, too many files of all") << "open"_ba << ENFILE << u"75 "_s + TooManyFiles;
        QTest::newRow("write, disk") << "write"_ba << EIO << standard(errors::PathFileAccess);
        QTest::newRow("unlink, disk") << "unlink"_ba << EIO << standard(errors::PathFileAccess);
    }

    void aFailureOfTheSystemIsToldAsWhatItIs()
    {
        QFETCH(QByteArray, call);
        QFETCH(int, failure);
        QFETCH(QString, told);
        bool fails = false;
        const QByteArray journal = QFile::encodeName(m_path + u"-journal"_s);
        const SystemCalls calls([&](const QByteArray& present, const QByteArray& path) {
            return fails && present == call && (call == "write" || path == journal) ? failure : 0;
        });
        const auto database = Database::open(m_path);
        const auto rows = RecordSet::openTable(database, schema::RefDoc());
        fails = true;
        QVERIFY(compareText(failureOf([&] {
                                TestWorld::addRow(rows, {u"b"_s, u"R-991231-003"_s, u""_s});
                            }),
                            told));
        fails = false;
        QCOMPARE(TestWorld::rowsOf(rows).size(), 2);
        TestWorld::addRow(rows, {u"b"_s, u"R-991231-003"_s, u""_s});
        QCOMPARE(TestWorld::rowsOf(rows).size(), 3);
    }

    void tooManyFilesAtOpeningAreNoMatterOfPermission()
    {
        bool fails = true;
        const SystemCalls calls(
            [&](const QByteArray& call, const QByteArray&) { return fails && call == "open" ? EMFILE : 0; });
        QVERIFY(compareText(failureOf([&] { Database::open(m_path); }), u"75 "_s + TooManyFiles));
        fails = false;
        QCOMPARE(failureOf([&] { Database::open(m_path); }), u"nothing"_s);
    }

    void aFileThatOnlyOthersMayReachIsNotMissing()
    {
        const QString folder = m_world->folder.path();
        const uid_t before = geteuid();
        constexpr uid_t Nobody = 65534;
        QVERIFY(QFile::setPermissions(folder, {}));
        QVERIFY(before != 0 || seteuid(Nobody) == 0);
        const QString told = failureOf([&] { Database::open(m_path); });
        QVERIFY(before != 0 || seteuid(before) == 0);
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QVERIFY(compareText(told, standard(errors::CannotOpen)));
        QVERIFY(compareText(failureOf([&] { Database::open(folder + u"/none.mdb"_s); }),
                            standard(errors::DatabaseNotFound)));
    }

    void aJournalThatVanishesWhileTheFileIsOpenedDisturbsNothing()
    {
        const QString journal = m_path + u"-journal"_s;
        QFile left(journal);
        QVERIFY(left.open(QIODevice::WriteOnly) && left.write(QByteArray(512, 'x')) == 512);
        left.close();
        int opened = 0;
        bool vanished = false;
        const SystemCalls calls([&](const QByteArray& call, const QByteArray& path) {
            // Another program has finished its write between the question and the opening.
            if (call == "open" && path == QFile::encodeName(journal) && ++opened == 2)
                vanished = QFile::remove(journal);
            return 0;
        });
        QCOMPARE(failureOf([&] { Database::open(m_path); }), u"nothing"_s);
        QVERIFY(vanished);
    }
#endif
};

QTEST_GUILESS_MAIN(TestTroubles)
#include "test_troubles.moc"
