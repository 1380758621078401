#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "store/database.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <random>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

namespace
{

#ifdef Q_OS_UNIX
/// Rights mean nothing to the superuser, so the test steps down for a moment.
class WithoutPrivileges
{
public:
    WithoutPrivileges()
    {
        if (m_before == 0 && seteuid(65534) != 0)
            qFatal("cannot step down");
    }
    ~WithoutPrivileges()
    {
        if (m_before == 0 && seteuid(0) != 0)
            qFatal("cannot step up again");
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    uid_t m_before = geteuid();
};
#endif

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Opens a file and reads, searches and changes every table, as far as it can be done.
void useEverything(const QString& path)
{
    const auto database = Database::open(path);
    for (const TableSchema* table : schema::all()) {
        errorOf([&] {
            const auto rows = RecordSet::openTable(database, *table);
            errorOf([&] {
                rows->forEachRow({0, 1}, [](const RecordSet::Row& row) { (void)row.text(0).size(); });
            });
            errorOf([&] {
                int steps = 0;
                for (rows->moveFirst(); !rows->endOfFile() && ++steps < 1000; rows->moveNext())
                    (void)rows->field(1);
            });
            errorOf([&] { rows->filtered(table->fields[0].name + u" Like '*水*'"_s)->recordCount(); });
            errorOf([&] { rows->findFirst(table->fields[1].name + u" ='M-991231-007'"_s); });
            errorOf([&] { TestWorld::addRow(rows, {u"新"_s, u"M-999999-999"_s}); });
            errorOf([&] {
                rows->moveLast();
                rows->deleteRow();
            });
        });
    }
}

} // namespace

class TestBadFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_world = std::make_unique<TestWorld>(); }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void aMissingFileIsReportedAndNotCreated()
    {
        const QString path = inFolder(u"none.mdb"_s);
        QCOMPARE(openingFails(path), errors::DatabaseNotFound);
        QVERIFY(!QFileInfo::exists(path));
        QCOMPARE(openingFails(inFolder(u"none/none.mdb"_s)), errors::DatabaseNotFound);
        QCOMPARE(openingFails(QString()), errors::DatabaseNotFound);
        QCOMPARE(openingFails(m_world->createDatabase() + QChar::Null), errors::DatabaseNotFound);
    }

    void anEmptyFileIsNoDatabase()
    {
        const QString path = inFolder(u"empty.mdb"_s);
        write(path, QByteArray());
        QCOMPARE(openingFails(path), errors::NotADatabase);
        QCOMPARE(QFileInfo(path).size(), 0);
    }

    void aTextFileIsNoDatabase()
    {
        const QString path = inFolder(u"text.mdb"_s);
        for (const QByteArray& text :
             {QByteArray("a"), QByteArray("水の話\r\n"), QByteArray(100000, 'x'),
              QByteArray("SQLite format 3"), QByteArray("SQLite format 3\0", 16), QByteArray(8192, '\0')}) {
            write(path, text);
            QCOMPARE(openingFails(path), errors::NotADatabase);
            QCOMPARE(read(path), text);
        }
    }

    void aFolderIsNoFile() { QCOMPARE(openingFails(m_world->folder.path()), errors::PathFileAccess); }

    void pipesAndDevicesNeitherOpenNorBlock()
    {
#ifdef Q_OS_UNIX
        const QString path = inFolder(u"pipe.mdb"_s);
        QCOMPARE(mkfifo(path.toUtf8().constData(), 0666), 0);
        QCOMPARE(openingFails(path), errors::PathFileAccess);
        QCOMPARE(openingFails(u"/dev/null"_s), errors::PathFileAccess);
        // A pipe where the journal belongs would block as well.
        const QString database = m_world->createDatabase();
        QCOMPARE(mkfifo((database + u"-journal"_s).toUtf8().constData(), 0666), 0);
        QCOMPARE(openingFails(database), errors::PathFileAccess);
#else
        QSKIP("There are no such files here.");
#endif
    }

    void aTruncatedFileIsDamaged()
    {
        const QByteArray whole = smallDatabase();
        const QString path = inFolder(u"short.mdb"_s);
        for (const qsizetype size : {whole.size() - 1, whole.size() - 4096, whole.size() / 2, qsizetype(4096),
                                     qsizetype(1000), qsizetype(99), qsizetype(16), qsizetype(1)}) {
            write(path, whole.first(size));
            QCOMPARE(openingFails(path), errors::NotADatabase);
        }
    }

    void damagedFilesNeverDoMoreThanFail()
    {
        const QByteArray whole = smallDatabase();
        const QString path = inFolder(u"damaged.mdb"_s);
        std::mt19937 random(991231); // NOLINT(cert-msc51-cpp): the same files every time
        std::uniform_int_distribution<qsizetype> anywhere(0, whole.size() - 1);
        std::uniform_int_distribution<qsizetype> header(0, 120);
        std::uniform_int_distribution<int> bit(0, 7);
        int refused = 0;
        for (int round = 0; round < 300; ++round) {
            QByteArray damaged = whole;
            // The header and the page tops steer everything, so a share of the damage falls there.
            const int flips = round % 4 == 0 ? 20 : 1;
            for (int i = 0; i < flips; ++i) {
                qsizetype at = anywhere(random);
                if (round % 3 == 0)
                    at = header(random);
                else if (round % 3 == 1)
                    at = at / 4096 * 4096 + at % 64;
                damaged[at] = static_cast<char>(damaged[at] ^ (1 << bit(random)));
            }
            QFile::remove(path);
            QFile::remove(path + u"-journal"_s);
            write(path, damaged);
            refused += errorOf([&] { useEverything(path); }) != 0 ? 1 : 0;
        }
        QVERIFY(refused > 10);
        QVERIFY(refused < 300);
    }

    void aBrokenHeaderFailsOnOpening_data()
    {
        QTest::addColumn<int>("position");
        QTest::newRow("magic") << 3;
        QTest::newRow("page size") << 16;
        QTest::newRow("write version") << 18;
        QTest::newRow("payload fraction") << 21;
        QTest::newRow("schema page type") << 100;
    }
    void aBrokenHeaderFailsOnOpening()
    {
        QFETCH(int, position);
        QByteArray bytes = smallDatabase();
        bytes[position] = static_cast<char>(bytes[position] ^ 0x7F);
        const QString path = inFolder(u"broken.mdb"_s);
        write(path, bytes);
        const qint32 number = openingFails(path);
        // A file of a later version may be read, but not written.
        QCOMPARE(number, position == 18 ? errors::CannotOpen : errors::NotADatabase);
    }

    void whatMayNotBeWrittenIsNotOpened()
    {
#ifdef Q_OS_UNIX
        const QString path = m_world->createDatabase();
        QFile::setPermissions(m_world->folder.path(), QFile::Permissions::fromInt(0x7777));
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        {
            const WithoutPrivileges person;
            QCOMPARE(openingFails(path), errors::CannotOpen);
        }
        QFile::setPermissions(path, QFile::Permissions::fromInt(0x6666));
        {
            const WithoutPrivileges person;
            QCOMPARE(openingFails(path), 0);
        }
        QFile::setPermissions(m_world->folder.path(), QFile::Permissions::fromInt(0x5555));
        {
            const WithoutPrivileges person;
            QCOMPARE(openingFails(path), errors::CannotOpen);
            QCOMPARE(errorOf([&] { Database::create(inFolder(u"new.mdb"_s)); }), errors::CannotOpen);
        }
        QFile::setPermissions(m_world->folder.path(), QFile::Permissions::fromInt(0x7777));
        QVERIFY(!QFileInfo::exists(inFolder(u"new.mdb"_s)));
#else
        QSKIP("Rights are set otherwise here.");
#endif
    }

    void aLinkToADatabaseIsJudgedByWhereTheDatabaseLies()
    {
#ifdef Q_OS_UNIX
        const QString database = m_world->createDatabase();
        QFile::setPermissions(database, QFile::Permissions::fromInt(0x6666));
        const QTemporaryDir elsewhere;
        QFile::setPermissions(elsewhere.path(), QFile::Permissions::fromInt(0x7777));
        const QString link = elsewhere.filePath(u"link.mdb"_s);
        QVERIFY(QFile::link(database, link));
        const auto openingAsAPersonFails = [&] {
            const WithoutPrivileges person;
            return openingFails(link);
        };
        // The journal has to stand beside the database, not beside the link.
        QFile::setPermissions(m_world->folder.path(), QFile::Permissions::fromInt(0x5555));
        QCOMPARE(openingAsAPersonFails(), errors::CannotOpen);
        QFile::setPermissions(m_world->folder.path(), QFile::Permissions::fromInt(0x7777));
        QFile::setPermissions(elsewhere.path(), QFile::Permissions::fromInt(0x5555));
        QCOMPARE(openingAsAPersonFails(), 0);
        QCOMPARE(mkfifo((database + u"-journal"_s).toUtf8().constData(), 0666), 0);
        QCOMPARE(openingFails(link), errors::PathFileAccess);
#else
        QSKIP("Rights are set otherwise here.");
#endif
    }

    void creatingNeverTouchesWhatIsThere()
    {
        const QString text = inFolder(u"text.mdb"_s);
        write(text, "precious");
        QCOMPARE(errorOf([&] { Database::create(text); }), errors::DatabaseExists);
        QCOMPARE(read(text), QByteArray("precious"));
        QCOMPARE(errorOf([&] { Database::create(m_world->folder.path()); }), errors::DatabaseExists);
        const QString link = inFolder(u"link.mdb"_s);
        QVERIFY(QFile::link(inFolder(u"nowhere"_s), link));
        QCOMPARE(errorOf([&] { Database::create(link); }), errors::DatabaseExists);
        QVERIFY(!QFileInfo::exists(inFolder(u"nowhere"_s)));
    }

    void creatingInAMissingFolderFails()
    {
        QCOMPARE(errorOf([&] { Database::create(inFolder(u"none/new.mdb"_s)); }), errors::PathNotFound);
        QVERIFY(!QFileInfo::exists(inFolder(u"none"_s)));
        // What stands behind a zero would not be part of the name.
        QCOMPARE(errorOf([&] { Database::create(inFolder(u"new.mdb"_s) + QChar::Null + u".bak"_s); }),
                 errors::PathNotFound);
        QCOMPARE(errorOf([] { Database::create(QString()); }), errors::PathNotFound);
        QCOMPARE(QDir(m_world->folder.path()).entryList(QDir::Files), QStringList());
    }

    void aNameThatWouldBeAnothersIsRefusedBeforeAnythingIsMade_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("dot at the end") << u"new.mdb."_s;
        QTest::newRow("blank at the end") << u"new.mdb "_s;
        QTest::newRow("colon") << u"new.mdb:other.mdb"_s;
        QTest::newRow("pattern") << u"n*w.mdb"_s;
    }

    void aNameThatWouldBeAnothersIsRefusedBeforeAnythingIsMade()
    {
        QFETCH(QString, name);
        // That is up to the system.
        const bool isAName = platform::isBareName(name);
        QCOMPARE(errorOf([&] { Database::create(inFolder(name)); }), isAName ? 0 : errors::PathFileAccess);
        QCOMPARE(QDir(m_world->folder.path()).entryList(QDir::Files),
                 isAName ? QStringList(name) : QStringList());
    }

    void unusualNamesWork_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("Japanese") << u"知識 ベース　その一.mdb"_s;
        QTest::newRow("quotes") << u"it's \"mine\".mdb"_s;
        QTest::newRow("like an address") << u"a%20b?mode=memory#x.mdb"_s;
        QTest::newRow("colon") << u":memory:"_s;
        QTest::newRow("blanks around") << u" x .mdb "_s;
        QTest::newRow("emoji") << u"😀.mdb"_s;
    }
    void unusualNamesWork()
    {
#ifdef Q_OS_UNIX
        QFETCH(QString, name);
        const QString path = m_world->folder.path() + u'/' + name;
        Database::create(path)->execute(schema::Main().statement);
        QVERIFY(QFileInfo::exists(path));
        const auto database = Database::open(path);
        QCOMPARE(database->path(), path);
        const auto rows = RecordSet::openTable(database, schema::Main());
        TestWorld::addRow(rows, {u"a"_s, u"M-991231-001"_s, u""_s});
        QCOMPARE(rows->recordCount(), 1);
        QCOMPARE(QDir(m_world->folder.path()).entryList(QDir::Files), QStringList(name));
#else
        QSKIP("Such names are not allowed here.");
#endif
    }

    void aRelativeNameCountsFromTheCurrentFolder()
    {
        m_world->createDatabase();
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_world->folder.path()));
        const qint32 number = openingFails(u"QUILLON.mdb"_s);
        const qint32 addressNumber = openingFails(u"file:QUILLON.mdb?mode=ro"_s);
#ifdef Q_OS_UNIX
        const qint32 colonNumber = errorOf([] { Database::create(u":colon.mdb"_s); });
#endif
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(number, 0);
        QCOMPARE(addressNumber, errors::DatabaseNotFound);
#ifdef Q_OS_UNIX
        QCOMPARE(colonNumber, 0);
        QVERIFY(QFileInfo::exists(m_world->folder.path() + u"/:colon.mdb"_s));
#endif
    }

private:
    QString inFolder(const QString& name) const
    {
        return m_world->folder.filePath(name);
    }

    static qint32 openingFails(const QString& path)
    {
        return errorOf([&] { Database::open(path); });
    }

    /// The bytes of a database with some rows in every table.
    QByteArray smallDatabase()
    {
        const QString path = m_world->createDatabase(u"whole.mdb"_s);
        const auto database = Database::open(path);
        sqlite::Transaction transaction(database->connection());
        for (const TableSchema* table : schema::all()) {
            const auto rows = RecordSet::openTable(database, *table);
            for (int i = 0; i < 20; ++i) {
                const QString number = QString::number(i).rightJustified(3, u'0');
                TestWorld::addRow(rows, {u"名前"_s + number, u"M-991231-"_s + number});
            }
        }
        TestWorld::addRow(RecordSet::openTable(database, schema::RefDoc()),
                          {u"長文"_s, u"R-991231-999"_s, QString(10000, u'水')});
        transaction.commit();
        return read(path);
    }

    std::unique_ptr<TestWorld> m_world;
};

QTEST_GUILESS_MAIN(TestBadFiles)
#include "test_bad_files.moc"
