#include "app/base/platform/file_identity.h"
#include "core/data_records.h"
#include "core/kept_copies.h"
#include "core/lost_things.h"
#include "store/database.h"
#include "store/keeper.h"
#include "store/kept/copies.h"
#include "store/opening.h"
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

/// What becomes of what is kept when a database gets another name or another folder.
class TestMovedDatabase : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;
    QString path;

    static inline const QString Water = u"M-991231-001"_s;

    Session& session() { return world->session; }
    QString fileIn(const QString& name) const { return world->folder.filePath(name); }
    /// A database that was written a while ago.
    void makeOlder(const QString& database)
    {
        QFile file(database);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(
            file.setFileTime(QDateTime::currentDateTime().addSecs(-3600), QFileDevice::FileModificationTime));
    }
    /// As a person creates one.
    void create(const QString& database)
    {
        world->dialogs.expect(MessageBox{.text = u"Quillon 用のデータベースを作成しました。"_s});
        QCOMPARE(CreateDbFile(session(), database), Opening::Opened);
    }
    void makeCopy()
    {
        kept::makeCopy({.place = {*session().keeper->keptFolder(), path},
                        .fileFolder = {},
                        .now = [] { return QDateTime(QDate(2026, 1, 31), QTime(12, 0)); },
                        .goesOn = [] { return true; }});
    }
    /// Copies a database as it is carried over the border of a disk: as another file with the same time.
    void carry(const QString& from, const QString& to)
    {
        const QDateTime written = QFileInfo(from).lastModified().toUTC();
        QVERIFY(QFile::copy(from, to));
        QFile file(to);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(written, QFileDevice::FileModificationTime));
    }
    QStringList lost()
    {
        LostThings things(session());
        things.ask({});
        while (things.readOn()) {
        }
        QStringList names;
        for (std::size_t i = 0; i < things.count(); ++i)
            names << things.entry(i).name;
        return names;
    }
    QStringList keptDatabases()
    {
        QStringList paths;
        for (const KeptDatabase& database : ListKeptDatabases(session()))
            paths << QFileInfo(database.path).fileName();
        return paths;
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->keep();
        path = world->createDatabase(u"前.mdb"_s);
        world->openDatabase(path);
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"流れるもの"_s});
        QVERIFY(DeleteData(session(), Water, 0));
    }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void aRenamedDatabaseKeepsItsHistory()
    {
        session().closeDatabase();
        QVERIFY(QFile::rename(path, fileIn(u"後.mdb"_s)));
        world->openDatabase(fileIn(u"後.mdb"_s));
        QCOMPARE(lost(), QStringList(u"水"_s));
        QCOMPARE(keptDatabases(), QStringList(u"後.mdb"_s));
        // What is lost from now on is kept with it.
        TestWorld::addRow(session().RsMain, {u"火"_s, Water, u""_s});
        world->clock.time = world->clock.time.addSecs(1);
        QVERIFY(DeleteData(session(), Water, 0));
        QCOMPARE(lost(), QStringList({u"火"_s, u"水"_s}));
    }

    void soDoesOneWhoseFolderWasRenamedAsOftenAsOneLikes()
    {
        QDir(world->folder.path()).mkdir(u"研究"_s);
        session().closeDatabase();
        QVERIFY(QFile::rename(path, fileIn(u"研究/前.mdb"_s)));
        world->openDatabase(fileIn(u"研究/前.mdb"_s));
        session().closeDatabase();
        QVERIFY(QDir(world->folder.path()).rename(u"研究"_s, u"完了"_s));
        world->openDatabase(fileIn(u"完了/前.mdb"_s));
        QCOMPARE(lost(), QStringList(u"水"_s));
        QCOMPARE(keptDatabases(), QStringList(u"前.mdb"_s));
    }

    void itsCopiesAndTheFilesThatTheyNameComeAlong()
    {
        QDir(world->folder.path()).mkdir(u"RefFile"_s);
        QFile picture(fileIn(u"RefFile/図.txt"_s));
        QVERIFY(picture.open(QIODevice::WriteOnly));
        picture.write("picture");
        picture.close();
        const auto identity = platform::fileIdentity(path);
        TestWorld::addRow(session().RsRefFile, {u"図.txt"_s, u"F-991231-001"_s, u"図.txt"_s});
        session().closeDatabase();
#ifdef Q_OS_WIN
        if (platform::fileIdentity(path) != identity)
            QSKIP("This system takes the last write to a file for its birth.");
#endif
        QCOMPARE(platform::fileIdentity(path), identity);
        kept::makeCopy({.place = {*session().keeper->keptFolder(), path},
                        .fileFolder = fileIn(u"RefFile"_s),
                        .now = [] { return QDateTime(QDate(2026, 1, 31), QTime(12, 0)); },
                        .goesOn = [] { return true; }});
        QVERIFY(QFile::rename(path, fileIn(u"後.mdb"_s)));
        world->openDatabase(fileIn(u"後.mdb"_s));
        const std::vector<kept::Copy> copies = ListCopies(session(), fileIn(u"後.mdb"_s));
        QCOMPARE(copies.size(), std::size_t{1});
        QDir(world->folder.path()).mkdir(u"別"_s);
        const auto files = TakeOutCopy(session(), copies.front(), fileIn(u"別/控え.mdb"_s));
        QVERIFY(files);
        QCOMPARE(files->written, 1);
    }

    void oneThatWasCarriedToAnotherDiskIsKnownByItsNewestCopy()
    {
        session().closeDatabase();
        makeOlder(path);
        makeCopy();
        carry(path, fileIn(u"後.mdb"_s));
        QVERIFY(QFile::remove(path));
        world->openDatabase(fileIn(u"後.mdb"_s));
        QCOMPARE(lost(), QStringList(u"水"_s));
    }

    void aDuplicateOfADatabaseThatIsStillThereBeginsItsOwnHistory()
    {
        session().closeDatabase();
        makeOlder(path);
        makeCopy();
        carry(path, fileIn(u"写し.mdb"_s));
        world->openDatabase(fileIn(u"写し.mdb"_s));
        QCOMPARE(lost(), QStringList());
        world->openDatabase(path);
        QCOMPARE(lost(), QStringList(u"水"_s));
    }

    void aDatabaseOnADiskThatIsNotThereLosesNothingToItsDuplicate()
    {
        QDir(world->folder.path()).mkdir(u"disk"_s);
        session().closeDatabase();
        const QString outside = fileIn(u"disk/前.mdb"_s);
        QVERIFY(QFile::rename(path, outside));
        world->openDatabase(outside);
        session().closeDatabase();
        path = outside;
        makeOlder(path);
        makeCopy();
        carry(outside, fileIn(u"写し.mdb"_s));
        QVERIFY(QDir(world->folder.path()).rename(u"disk"_s, u"away"_s));
        world->openDatabase(fileIn(u"写し.mdb"_s));
        QCOMPARE(lost(), QStringList());
        QVERIFY(QDir(world->folder.path()).rename(u"away"_s, u"disk"_s));
        world->openDatabase(outside);
        QCOMPARE(lost(), QStringList(u"水"_s));
    }

    void anotherDatabaseGetsNothingOfOneThatIsGone()
    {
        session().closeDatabase();
        makeOlder(path);
        makeCopy();
        QVERIFY(QFile::remove(path));
        world->openDatabase(world->createDatabase(u"後.mdb"_s));
        QCOMPARE(lost(), QStringList());
        QVERIFY(keptDatabases().contains(u"前.mdb"_s));
    }

    void aNewDatabaseUnderAFormerNameBeginsItsOwnHistory()
    {
        session().closeDatabase();
        makeCopy();
        QVERIFY(QFile::remove(path));
        create(path);
        QCOMPARE(lost(), QStringList());
        QCOMPARE(ListCopies(session(), path).size(), std::size_t{0});
        // What is kept of the former one is listed as of one that is gone.
        const QString former = fileIn(u"前（以前のもの）.mdb"_s);
        QVERIFY(keptDatabases().contains(u"前（以前のもの）.mdb"_s));
        LostThings things(session(), former);
        things.ask({});
        things.readOn();
        QCOMPARE(things.count(), std::size_t{1});
        QCOMPARE(things.entry(0).name, u"水"_s);
        const std::vector<kept::Copy> copies = ListCopies(session(), former);
        QCOMPARE(copies.size(), std::size_t{1});
        // Taken out under that name, it is that database again.
        QVERIFY(TakeOutCopy(session(), copies.front(), former));
        world->openDatabase(former);
        QCOMPARE(lost(), QStringList(u"水"_s));
    }

    void soDoesOneThatIsTheThirdOfItsName()
    {
        for (const QString& name : {u"火"_s, u"風"_s}) {
            session().closeDatabase();
            QVERIFY(QFile::remove(path));
            create(path);
            TestWorld::addRow(session().RsMain, {name, Water, u""_s});
            QVERIFY(DeleteData(session(), Water, 0));
        }
        QCOMPARE(lost(), QStringList(u"風"_s));
        QVERIFY(keptDatabases().contains(u"前（以前のもの）.mdb"_s));
        QVERIFY(keptDatabases().contains(u"前（以前のもの 2）.mdb"_s));
    }

    void theFormerOneTakesItsHistoryAlongWhenItWasRenamed()
    {
        session().closeDatabase();
        QVERIFY(QFile::rename(path, fileIn(u"後.mdb"_s)));
        create(path);
        world->openDatabase(fileIn(u"後.mdb"_s));
        QCOMPARE(lost(), QStringList(u"水"_s));
        QVERIFY(!keptDatabases().contains(u"前（以前のもの）.mdb"_s));
    }

    void aCopyThatIsTakenOutUnderTheNameOfAnotherDatabaseDoesNotInherit()
    {
        session().closeDatabase();
        makeCopy();
        const QString other = world->createDatabase(u"後.mdb"_s);
        world->openDatabase(other);
        TestWorld::addRow(session().RsMain, {u"火"_s, Water, u""_s});
        QVERIFY(DeleteData(session(), Water, 0));
        session().closeDatabase();
        QVERIFY(QFile::remove(other));
        QVERIFY(TakeOutCopy(session(), ListCopies(session(), path).front(), other));
        world->openDatabase(other);
        QCOMPARE(lost(), QStringList());
        QVERIFY(keptDatabases().contains(u"後（以前のもの）.mdb"_s));
    }

    void whereSomethingIsKeptAlreadyNothingIsMixed()
    {
        const QString other = world->createDatabase(u"後.mdb"_s);
        world->openDatabase(other);
        TestWorld::addRow(session().RsMain, {u"火"_s, Water, u""_s});
        QVERIFY(DeleteData(session(), Water, 0));
        session().closeDatabase();
        QVERIFY(QFile::remove(other));
        QVERIFY(QFile::rename(path, other));
        world->openDatabase(other);
        QCOMPARE(lost(), QStringList(u"火"_s));
        QVERIFY(keptDatabases().contains(u"前.mdb"_s));
    }
};

QTEST_GUILESS_MAIN(TestMovedDatabase)
#include "test_moved_database.moc"
