#include "app/base/error.h"
#include "store/kept/copies.h"
#include "store/kept/damage.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/sqlite/transaction.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTest>

#include <memory>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;
using kept::Damage;

/// What becomes of a database that turns out to be damaged, and of one that was left in the middle of a write.
class TestDamage : public QObject
{
    Q_OBJECT

    static constexpr int Documents = 300;

    std::unique_ptr<TestWorld> world;
    QString path;
    std::vector<Damage> damages; // as they were told

    Session& session() { return world->session; }
    QString keptFolder() const { return world->folder.filePath(u"kept"_s); }
    kept::Place place() const { return {keptFolder(), path}; }
    /// Keeps what is opened from now on. Copies are made when something is suspected, and at the end.
    void keep()
    {
        keep(kept::CopyTimes{.afterOpening = std::chrono::hours(1), .between = std::chrono::hours(1)},
             keptFolder());
    }
    void keep(const std::optional<kept::CopyTimes>& times, const std::optional<QString>& folder)
    {
        world->keeping = std::make_unique<kept::Keeping>(
            session().reporting,
            kept::KeepingOrder{.keptFolder = folder,
                               .fileFolder = world->folder.filePath(u"RefFile"_s),
                               .copies = times,
                               .onDamage = [this](const Damage& damage) { damages.push_back(damage); }});
        session().keeper = world->keeping.get();
    }
    void makeCopy(const QDateTime& time) const
    {
        kept::makeCopy({.place = place(),
                        .fileFolder = {},
                        .now = [time] { return time; },
                        .goesOn = [] { return true; }});
    }
    static QDateTime at(int hour) { return {QDate(2026, 1, 31), QTime(hour, 0)}; }
    static void overwrite(const QString& file, qint64 from, qint64 size)
    {
        QFile content(file);
        QVERIFY(content.open(QIODevice::ReadWrite) && content.seek(from));
        QCOMPARE(content.write(QByteArray(size, '?')), size);
    }
    /// Damages the pages of the documents, and nothing that is read in an opening.
    void damage() const
    {
        const qint64 size = QFileInfo(path).size();
        overwrite(path, size / 2, size / 2);
    }
    qint32 readDocuments()
    {
        return errorOf([this] {
            session().RsRefDoc->forEachRow({0, 2},
                                           [](const RecordSet::Row& row) { return row.text(1).size() >= 0; });
        });
    }
    /// Leaves a copy of the database as a kill in the middle of a write would, under another name.
    void breakOff()
    {
        const QString left = world->folder.filePath(u"左.mdb"_s);
        {
            const auto database = Database::open(path);
            database->connection().execute(u"PRAGMA cache_size = 1"_s);
            database->connection().execute(u"BEGIN"_s);
            database->connection().execute(
                u"INSERT INTO Main WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000)"
                u" SELECT hex(randomblob(20)), 'x' || i, hex(randomblob(100)) FROM n"_s);
            QVERIFY(QFile::copy(path, left) && QFile::copy(path + u"-journal"_s, left + u"-journal"_s));
        }
        path = left;
    }
    std::size_t copyCount() const { return kept::listCopies(place()).size(); }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        path = world->createDatabase();
        const auto database = Database::open(path);
        const auto documents = RecordSet::openTable(database, schema::RefDoc());
        sqlite::Transaction write(database->connection());
        for (int i = 0; i < Documents; ++i)
            TestWorld::addRow(documents, {u"文献"_s, u"R-991231-%1"_s.arg(i), QString(1000, u'水')});
        write.commit();
    }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
        damages.clear();
    }

    void damageThatIsMetWithIsToldOnceWithTheNewestCopy()
    {
        makeCopy(at(8));
        makeCopy(at(9));
        damage();
        keep();
        QVERIFY(OpenDbFile(session(), path));
        QCOMPARE(readDocuments(), errors::NotADatabase);
        QTRY_COMPARE(damages.size(), std::size_t{1});
        QCOMPARE(damages[0].database, place().database());
        QCOMPARE(damages[0].newestGood, at(9));
        QCOMPARE(readDocuments(), errors::NotADatabase);
        world->keeping->finish();
        QCoreApplication::processEvents();
        QCOMPARE(damages.size(), std::size_t{1});
        QCOMPARE(copyCount(), std::size_t{2}); // a damaged copy takes nobody's place
    }

    void aCopyThatWasHarmedIsNotNamed()
    {
        makeCopy(at(8));
        makeCopy(at(9));
        overwrite(kept::listCopies(place())[0].path, 5000, 1);
        damage();
        QCOMPARE(kept::lookForGoodCopy(place()).newestGood, at(8));
    }

    void whereNoCopyIsGoodNoneIsNamed()
    {
        damage();
        keep();
        QVERIFY(OpenDbFile(session(), path));
        QCOMPARE(readDocuments(), errors::NotADatabase);
        QTRY_COMPARE(damages.size(), std::size_t{1});
        QCOMPARE(damages[0].newestGood, std::nullopt);
    }

    void damageThatNobodyMeetsWithIsFoundByTheNextCopy()
    {
        damage();
        keep();
        QVERIFY(OpenDbFile(session(), path));
        QCOMPARE(readDocuments(), errors::NotADatabase);
        world->keeping.reset(); // makes the last copy
        session().keeper = nullptr;
        QVERIFY(world->eventLog.lines.join(u'\n').contains(u"LOCATION : KeptCopy, ErrorNumber : 75"_s));
    }

    void aHealthyFileLeftInTheMiddleOfAWriteIsLookedAtAndNothingIsTold()
    {
        breakOff();
        keep();
        QVERIFY(OpenDbFile(session(), path));
        // Long before the copy that is due after every opening.
        QTRY_COMPARE(copyCount(), std::size_t{1});
        QCOMPARE(session().RsMain->recordCount(), 0);
        world->keeping->finish();
        QCoreApplication::processEvents();
        QCOMPARE(damages.size(), std::size_t{0});
    }

    void aDamagedFileLeftInTheMiddleOfAWriteIsToldBeforeAnybodyReadsIt()
    {
        damage();
        breakOff();
        keep();
        QVERIFY(OpenDbFile(session(), path));
        QTRY_COMPARE(damages.size(), std::size_t{1});
        QCOMPARE(damages[0].database, place().database());
    }

    void alsoWithoutCopiesAFileLeftInTheMiddleOfAWriteIsLookedAt_data()
    {
        QTest::addColumn<bool>("keepsHistory");
        QTest::addColumn<bool>("isDamaged");
        QTest::newRow("history only, damaged") << true << true;
        QTest::newRow("history only, healthy") << true << false;
        QTest::newRow("nothing kept, damaged") << false << true;
        QTest::newRow("nothing kept, healthy") << false << false;
    }
    void alsoWithoutCopiesAFileLeftInTheMiddleOfAWriteIsLookedAt()
    {
        QFETCH(bool, keepsHistory);
        QFETCH(bool, isDamaged);
        if (isDamaged)
            damage();
        breakOff();
        keep({}, keepsHistory ? std::optional(keptFolder()) : std::nullopt);
        QVERIFY(OpenDbFile(session(), path));
        if (isDamaged) {
            QTRY_COMPARE(damages.size(), std::size_t{1});
            QCOMPARE(damages[0].database, place().database());
            QCOMPARE(damages[0].newestGood, std::nullopt);
        } else {
            world->keeping->finish();
            QCoreApplication::processEvents();
            QCOMPARE(damages.size(), std::size_t{0});
            QCOMPARE(world->eventLog.lines, QStringList());
        }
        QCOMPARE(copyCount(), std::size_t{0});
        QCOMPARE(QFileInfo::exists(keptFolder()), false);
    }

    void aLookLeavesNothingBehindAndFindsDamage()
    {
        const auto look = [this] {
            return kept::makeCopy({.place = place(),
                                   .fileFolder = {},
                                   .now = [] { return at(8); },
                                   .goesOn = [] { return true; },
                                   .inspection = kept::Inspection::Thorough,
                                   .onlyLooks = true});
        };
        QDir(world->folder.path()).mkdir(u"temporary"_s);
        const QDir temporary(world->folder.filePath(u"temporary"_s));
        const QByteArray before = qgetenv("TMPDIR");
        const auto putBack =
            qScopeGuard([&] { before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before); });
        qputenv("TMPDIR", temporary.path().toUtf8());
        QCOMPARE(look(), kept::CopyOutcome::Looked);
        damage();
        QCOMPARE(errorOf(look), errors::NotADatabase);
        QVERIFY(temporary.isEmpty());
        QCOMPARE(copyCount(), std::size_t{0});
    }

    void aFileThatWasClosedWellIsNotSuspected()
    {
        keep();
        QVERIFY(OpenDbFile(session(), path));
        QCOMPARE(readDocuments(), 0);
        QTest::qWait(0);
        QCOMPARE(copyCount(), std::size_t{0});
    }

    void anUnchangedFileIsLookedAtAllTheSameAndGetsNoSecondCopy()
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(at(7), QFileDevice::FileModificationTime)); // written a while ago
        file.close();
        const auto inspect = [this](kept::Inspection inspection) {
            return kept::makeCopy({.place = place(),
                                   .fileFolder = {},
                                   .now = [] { return at(8); },
                                   .goesOn = [] { return true; },
                                   .inspection = inspection});
        };
        QCOMPARE(inspect(kept::Inspection::Quick), kept::CopyOutcome::Made);
        QCOMPARE(inspect(kept::Inspection::Quick), kept::CopyOutcome::Unchanged);
        QCOMPARE(inspect(kept::Inspection::Thorough), kept::CopyOutcome::Unchanged);
        QCOMPARE(copyCount(), std::size_t{1});
        // A disk that decays leaves no new date.
        damage();
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(at(7), QFileDevice::FileModificationTime));
        file.close();
        QCOMPARE(inspect(kept::Inspection::WhenChanged), kept::CopyOutcome::Unchanged);
        QCOMPARE(errorOf([&] { inspect(kept::Inspection::Quick); }), errors::NotADatabase);
    }

    void onlyAThoroughLookComparesIndexesWithTheirTables()
    {
        qint64 end = 0; // of the page with the only entry of the index
        {
            const auto database = Database::open(path);
            TestWorld::addRow(RecordSet::openTable(database, schema::OpenApp()), {u"図"_s, u""_s});
            database->connection().execute(u"CREATE INDEX spare ON OpenApp (AppName)"_s);
            sqlite::Statement& root = database->connection().prepare(
                u"SELECT rootpage * (SELECT page_size FROM pragma_page_size) FROM sqlite_master "
                u"WHERE name = 'spare'"_s);
            QVERIFY(root.step());
            end = root.number(0);
            root.reset();
        }
        overwrite(path, end - 2, 2); // its text
        const auto look = [this](kept::Inspection inspection) {
            return errorOf([&] {
                kept::makeCopy({.place = place(),
                                .fileFolder = {},
                                .now = [] { return at(8); },
                                .goesOn = [] { return true; },
                                .inspection = inspection});
            });
        };
        QCOMPARE(look(kept::Inspection::Quick), 0);
        QCOMPARE(look(kept::Inspection::Thorough), errors::NotADatabase);
    }

    void aDatabaseThatCannotBeOpenedIsToldOnceWithItsNewestCopy()
    {
        makeCopy(at(8));
        overwrite(path, 0, 4096);
        keep();
        for (int i = 0; i < 2; ++i) {
            world->dialogs.expect(failureBox(u"OpenDbFile"_s, errors::NotADatabase));
            QVERIFY(!OpenDbFile(session(), path));
        }
        QTRY_COMPARE(damages.size(), std::size_t{1});
        QCOMPARE(damages[0].newestGood, at(8));
        world->keeping->finish();
        QCoreApplication::processEvents();
        QCOMPARE(damages.size(), std::size_t{1});
    }

    void aFileOfAnotherKindIsNotCalledDamaged()
    {
        const QString letter = world->folder.filePath(u"手紙.txt"_s);
        QFile file(letter);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(2000, 'x'));
        file.close();
        keep();
        world->dialogs.expect(failureBox(u"OpenDbFile"_s, errors::NotADatabase));
        QVERIFY(!OpenDbFile(session(), letter));
        world->keeping->finish();
        QCoreApplication::processEvents();
        QCOMPARE(damages.size(), std::size_t{0});
    }
};

QTEST_GUILESS_MAIN(TestDamage)
#include "test_damage.moc"
