#include "store/kept/file_contents.h"
#include "store/kept/history.h"
#include "store/kept/history_file.h"
#include "store/kept/history_writer.h"
#include "store/kept/pruning.h"
#include "store/record_set.h"
#include "tests/support/test_world.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What of the kept things goes in the end.
class TestPruning : public QObject
{
    Q_OBJECT

    static constexpr qint64 Day = qint64{24} * 60 * 60 * 1000;

    std::unique_ptr<TestWorld> world;
    QString path;
    qint64 now = 0;

    kept::Place place() const { return {world->folder.filePath(u"kept"_s), path}; }
    static void makeOlder(const QString& file, qint64 days)
    {
        QFile of(file);
        QVERIFY(of.open(QIODevice::ReadWrite));
        QVERIFY(of.setFileTime(of.fileTime(QFileDevice::FileModificationTime).addDays(-days),
                               QFileDevice::FileModificationTime));
    }
    QStringList files(const QString& folder) const
    {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    QByteArray keepContent(const QByteArray& content)
    {
        QFile file(world->folder.filePath(u"source"_s));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return {};
        file.write(content);
        file.close();
        return kept::FileContents(place()).keep(file.fileName()).value_or(QByteArray());
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->keep();
        path = world->createDatabase();
        world->openDatabase(path);
        now = QDateTime::currentMSecsSinceEpoch();
    }
    void cleanup() { world.reset(); }

    void historyThatIsOlderThanAYearGoes()
    {
        QCOMPARE(kept::historyToRemove({{.lastWritten = 400 * Day, .size = 10},
                                        {.lastWritten = 30 * Day, .size = 10},
                                        {.lastWritten = 20 * Day, .size = 10}},
                                       400 * Day),
                 std::vector<std::size_t>({2, 1}));
    }

    void whereThereIsTooMuchTheOldestGoes()
    {
        const kept::HistoryRules rules{.longest = 365 * Day, .budget = 25, .always = Day};
        QCOMPARE(kept::historyToRemove({{.lastWritten = 98 * Day, .size = 10},
                                        {.lastWritten = 96 * Day, .size = 10},
                                        {.lastWritten = 97 * Day, .size = 10}},
                                       100 * Day, rules),
                 std::vector<std::size_t>({1}));
    }

    void whatIsOfTodayStaysWhateverItsSize()
    {
        const kept::HistoryRules rules{.longest = 365 * Day, .budget = 0, .always = Day};
        QCOMPARE(kept::historyToRemove({{.lastWritten = 100 * Day, .size = 10}}, 100 * Day, rules),
                 std::vector<std::size_t>());
    }

    void theFilesOfAnOldHistoryAreRemoved()
    {
        for (int i = 1; i <= 2; ++i) {
            TestWorld::addRow(world->session.RsOpenApp, {u"app"_s, u"path"_s});
            world->session.RsOpenApp->deleteEveryRow();
            world->openDatabase(path);
        }
        QCOMPARE(files(place().history()).size(), 2);
        makeOlder(place().history() + u'/' + files(place().history()).at(0), 400);
        kept::prune(place(), now);
        QCOMPARE(files(place().history()).size(), 1);
    }

    void aContentThatNothingNamesGoesAfterAnHour()
    {
        const QByteArray named = keepContent("named");
        const QByteArray unnamed = keepContent("unnamed");
        const QByteArray young = keepContent("young");
        kept::HistoryFile history(place(), world->session.reporting);
        kept::writeFileReplaced(history, u"a"_s, named, 5);
        for (const QByteArray& hash : {named, unnamed})
            makeOlder(place().files() + u'/' + QString::fromLatin1(hash.toHex()), 1);
        kept::prune(place(), now);
        const kept::FileContents contents(place());
        QVERIFY(contents.find(named));
        QVERIFY(!contents.find(unnamed));
        QVERIFY(contents.find(young));
    }

    void whileACopysListCannotBeReadNoContentGoes_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("cut") << QByteArray("{\"time\": \"2026-01-31T12:00:00.000\", \"fil");
        QTest::newRow("without files") << QByteArray("{\"time\": \"2026-01-31T12:00:00.000\"}");
    }
    void whileACopysListCannotBeReadNoContentGoes()
    {
        QFETCH(const QByteArray, list);
        const QByteArray hash = keepContent("content");
        makeOlder(place().files() + u'/' + QString::fromLatin1(hash.toHex()), 1);
        QVERIFY(place().make(place().copies()));
        QFile copy(place().copies() + u"/2026-01-31_120000.mdb"_s);
        QVERIFY(copy.open(QIODevice::WriteOnly));
        QFile about(place().copies() + u"/2026-01-31_120000.json"_s);
        if (!list.isNull()) {
            QVERIFY(about.open(QIODevice::WriteOnly));
            about.write(list);
            about.close();
        }
        kept::prune(place(), now);
        QVERIFY(kept::FileContents(place()).find(hash));

        // As soon as it can be read and does not name it, it goes.
        QVERIFY(about.open(QIODevice::WriteOnly | QIODevice::Truncate));
        about.write("{\"time\": \"2026-01-31T12:00:00.000\", \"files\": []}");
        about.close();
        kept::prune(place(), now);
        QVERIFY(!kept::FileContents(place()).find(hash));
    }

    void whileTheFolderOfCopiesCannotBeReadNoContentGoes()
    {
        const QByteArray hash = keepContent("content");
        makeOlder(place().files() + u'/' + QString::fromLatin1(hash.toHex()), 1);
        // No folder, as one that the disk cannot read any more, or that belongs to somebody else.
        QFile inTheWay(place().copies());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        kept::prune(place(), now);
        QVERIFY(kept::FileContents(place()).find(hash));
        inTheWay.remove();
        kept::prune(place(), now);
        QVERIFY(!kept::FileContents(place()).find(hash));
    }

    void aListWithoutItsCopyGoesAfterADay()
    {
        QVERIFY(place().make(place().copies()));
        for (const QString& name : {u"old.json"_s, u"young.json"_s, u"whole.json"_s, u"whole.mdb"_s}) {
            QFile file(place().copies() + u'/' + name);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        makeOlder(place().copies() + u"/old.json"_s, 2);
        makeOlder(place().copies() + u"/whole.json"_s, 2);
        kept::prune(place(), now);
        QCOMPARE(files(place().copies()), QStringList({u"whole.json"_s, u"whole.mdb"_s, u"young.json"_s}));
    }

    void whatIsKeptOnceMoreIsYoungAgain()
    {
        const QByteArray hash = keepContent("again");
        makeOlder(place().files() + u'/' + QString::fromLatin1(hash.toHex()), 1);
        keepContent("again");
        kept::prune(place(), now);
        QVERIFY(kept::FileContents(place()).find(hash));
    }

    void whatAKilledProgramLeftGoesAfterADay()
    {
        QVERIFY(place().make(place().copies()));
        for (const QString& name : {u"old"_s, u"young"_s}) {
            QFile file(place().copies() + u"/.new-"_s + name);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        makeOlder(place().copies() + u"/.new-old"_s, 2);
        kept::prune(place(), now);
        QCOMPARE(files(place().copies()), QStringList(u".new-young"_s));
    }

    void aDamagedContentIsNotTakenForWhatItWas()
    {
        const QByteArray hash = keepContent("content");
        QFile file(place().files() + u'/' + QString::fromLatin1(hash.toHex()));
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.putChar('?');
        file.close();
        QVERIFY(!kept::FileContents(place()).find(hash));
        keepContent("content");
        QVERIFY(kept::FileContents(place()).find(hash));
    }

    void whatIsCutOrChangedIsNotTakenForKept()
    {
        const QByteArray small = keepContent("content");
        const QByteArray large = keepContent(QByteArray(100'000, 'x'));
        const kept::FileContents contents(place());
        QVERIFY(contents.contains(small, 7));
        QVERIFY(contents.contains(large, 100'000));
        QVERIFY(!contents.contains({}, 7));
        QFile changed(place().files() + u'/' + QString::fromLatin1(small.toHex()));
        QVERIFY(changed.open(QIODevice::ReadWrite));
        changed.putChar('?');
        changed.close();
        QVERIFY(QFile::resize(place().files() + u'/' + QString::fromLatin1(large.toHex()), 99'999));
        QVERIFY(!contents.contains(small, 7));
        QVERIFY(!contents.contains(large, 100'000));
    }

    void whatIsKeptAlreadyTakesNoFurtherRoom()
    {
        const QByteArray hash = keepContent("12345");
        makeOlder(place().files() + u'/' + QString::fromLatin1(hash.toHex()), 1);
        const kept::FileContents full(place(), {.file = 100, .all = 5});
        QCOMPARE(full.keep(world->folder.filePath(u"source"_s)), hash);
        kept::prune(place(), now);
        QVERIFY2(full.find(hash), "it is not young again");
    }

    void filesThatStayLeaveRoomForSuchAsGo()
    {
        QVERIFY(kept::ContentLimits::ofFilesThatStay().all < kept::ContentLimits().all);
        QCOMPARE(kept::ContentLimits::ofFilesThatStay().file, kept::ContentLimits().file);
    }

    void contentsBeyondTheBudgetAreNotKept()
    {
        keepContent("12345");
        QFile file(world->folder.filePath(u"source"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("123456");
        file.close();
        QVERIFY(!kept::FileContents(place(), {.file = 100, .all = 10}).keep(file.fileName()));
        QVERIFY(kept::FileContents(place(), {.file = 100, .all = 11}).keep(file.fileName()));
    }
};

QTEST_GUILESS_MAIN(TestPruning)
#include "test_pruning.moc"
