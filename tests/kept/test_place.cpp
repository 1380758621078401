#include "store/kept/place.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using kept::Place;

/// Where what is kept for a database lies.
class TestPlace : public QObject
{
    Q_OBJECT

    std::optional<QTemporaryDir> folder;

    QString kept() const { return folder->filePath(u"kept"_s); }
    QString fileIn(const QString& name) const
    {
        QString path = folder->filePath(name);
        QFile file(path);
        return file.open(QIODevice::WriteOnly) ? QFileInfo(path).canonicalFilePath() : QString();
    }

private Q_SLOTS:
    void init()
    {
        folder.emplace();
        qunsetenv("QUILLON_COPIES");
    }
    void cleanup()
    {
        qunsetenv("QUILLON_COPIES");
        qunsetenv("XDG_DATA_HOME");
        folder.reset();
    }

    void itIsKnownBeforehandWhetherAnythingCanBeKept()
    {
        QVERIFY(kept::mayKeepIn(folder->path()));
        QVERIFY(kept::mayKeepIn(kept() + u"/a/b"_s));
        QVERIFY(!QFileInfo::exists(kept()));
        QFile file(folder->filePath(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!kept::mayKeepIn(file.fileName()));
        QVERIFY(!kept::mayKeepIn(file.fileName() + u"/kept"_s));
    }

#ifdef Q_OS_UNIX
    void nothingCanBeKeptInTheFolderOfSomebodyElse()
    {
        QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x5555)));
        // An administrator may write everywhere, so one becomes somebody else for a moment.
        constexpr uid_t Nobody = 65534;
        const bool administrator = geteuid() == 0;
        QVERIFY(!administrator || seteuid(Nobody) == 0);
        const bool may = kept::mayKeepIn(kept());
        QVERIFY(!administrator || seteuid(0) == 0);
        QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7755)));
        QVERIFY(!may);
    }
#endif

    void theUsersDataFolderIsThePlaceUnlessAnotherIsNamed()
    {
        qputenv("XDG_DATA_HOME", "/somewhere/data");
#ifdef Q_OS_LINUX
        QCOMPARE(kept::keptFolder(), u"/somewhere/data/quillon"_s);
#endif
        const QString elsewhere = QDir::rootPath() + u"elsewhere"_s;
        qputenv("QUILLON_COPIES", elsewhere.toLocal8Bit());
        QCOMPARE(kept::keptFolder(), elsewhere);
        qputenv("QUILLON_COPIES", "here");
        QCOMPARE(kept::keptFolder(), QDir::currentPath() + u"/here"_s);
    }

    void keepingCanBeSwitchedOff()
    {
        qputenv("QUILLON_COPIES", "off");
        QCOMPARE(kept::keptFolder(), std::nullopt);
    }

    void aPersonCanReadWhoseFolderItIs()
    {
        const QString database = fileIn(u"研究ノート.mdb"_s);
        const Place place(kept(), database);
        QVERIFY(QFileInfo(place.folder()).fileName().startsWith(u"研究ノート.mdb-"_s));
        QVERIFY(place.make(place.history()));
        QFile about(place.folder() + u"/database.json"_s);
        QVERIFY(about.open(QIODevice::ReadOnly));
        QCOMPARE(QJsonDocument::fromJson(about.readAll())[u"path"].toString(), database);
    }

    void aDatabaseHasOnePlaceInEverySpelling()
    {
        const QString database = fileIn(u"Know.mdb"_s);
        const QString other = folder->filePath(u"KNOW.MDB"_s);
        if (!QFile::exists(other))
            QSKIP("Case tells names apart here.");
        const Place place(kept(), database);
        QVERIFY(place.make(place.history()));
        QVERIFY(QDir(Place(kept(), other).history()).exists());
        // Also after its name was written in another way.
        QVERIFY(QFile::rename(database, folder->filePath(u"between"_s)));
        QVERIFY(QFile::rename(folder->filePath(u"between"_s), other));
        const Place renamed(kept(), other);
        QVERIFY(QDir(renamed.history()).exists());
        renamed.note();
        QCOMPARE(quillon::kept::databasesIn(kept()), QStringList(renamed.database()));
    }

    void databasesOfTheSameNameHavePlacesOfTheirOwn()
    {
        QVERIFY(QDir(folder->path()).mkdir(u"other"_s));
        const Place one(kept(), fileIn(u"a.mdb"_s));
        const Place other(kept(), fileIn(u"other/a.mdb"_s));
        QVERIFY(one.folder() != other.folder());
    }

#ifndef Q_OS_WIN // what the toolkit makes for a link is a file there
    void aLinkLeadsToThePlaceOfItsFile()
    {
        const QString database = fileIn(u"a.mdb"_s);
        const QString link = folder->filePath(u"link.mdb"_s);
        QVERIFY(QFile::link(database, link));
        QCOMPARE(Place(kept(), link).folder(), Place(kept(), database).folder());
    }
#endif

    void aLongNameOrOneOfOddCharactersMakesAFolderAllTheSame()
    {
        for (const QString& name : {QString(70, u'水') + u".mdb"_s, u"a:b?*\\c.mdb"_s, u"改\n行.mdb"_s}) {
            const Place place(kept(), folder->filePath(name));
            QVERIFY2(place.make(place.copies()), qPrintable(name));
        }
    }

#ifndef Q_OS_WIN // the folders of a person are closed to others there
    void everythingIsForTheUserAlone()
    {
        const Place place(kept(), fileIn(u"a.mdb"_s));
        QVERIFY(place.make(place.files()));
        constexpr auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup |
                                QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
        for (const QString& path :
             {kept(), place.folder(), place.files(), place.folder() + u"/database.json"_s}) {
            QVERIFY2(QFileInfo::exists(path), qPrintable(path));
            QVERIFY2((QFileInfo(path).permissions() & others) == QFileDevice::Permissions(),
                     qPrintable(path));
        }
    }
#endif

    void whatADiskWithoutRoomLeftOfItsNameIsWrittenAnew_data()
    {
        QTest::addColumn<QByteArray>("left");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("a part") << QByteArray("{\"path\": \"/ho");
    }
    void whatADiskWithoutRoomLeftOfItsNameIsWrittenAnew()
    {
        QFETCH(const QByteArray, left);
        const QString database = fileIn(u"a.mdb"_s);
        QVERIFY(Place(kept(), database).make(Place(kept(), database).copies()));
        QFile about(Place(kept(), database).folder() + u"/database.json"_s);
        QVERIFY(about.open(QIODevice::WriteOnly | QIODevice::Truncate));
        about.write(left);
        about.close();
        QCOMPARE(kept::databasesIn(kept()), QStringList());
        QVERIFY(Place(kept(), database).make(Place(kept(), database).copies()));
        QCOMPARE(kept::databasesIn(kept()), QStringList(database));
    }

    void aPlaceThatCannotBeMadeIsTold()
    {
        const Place place(fileIn(u"a file"_s), fileIn(u"a.mdb"_s));
        QVERIFY(!place.make(place.history()));
    }
};

QTEST_GUILESS_MAIN(TestPlace)
#include "test_place.moc"
