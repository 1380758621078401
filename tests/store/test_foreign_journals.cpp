// What stands beside a database: opening changes nothing on the disk before the file is known to be one of ours.
#include "app/base/error.h"
#include "store/database.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/store/foreign_file.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QTest>
#include <QtEndian>

#include <memory>
#include <numeric>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

namespace
{

constexpr const char* TheirTable = "CREATE TABLE Customers (Name TEXT)";
constexpr const char* TheirRows =
    "INSERT INTO Customers WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1"
    " FROM n WHERE i < 2000) SELECT hex(randomblob(200)) FROM n";
constexpr const char* OurRow = "INSERT INTO Main VALUES ('水', 'M-991231-001', '')";
constexpr const char* OurManyRows =
    "INSERT INTO Main WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000)"
    " SELECT hex(randomblob(20)), 'x' || i, hex(randomblob(100)) FROM n";

} // namespace

class TestForeignJournals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<TestWorld>();
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"work"_s));
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"given"_s));
        m_work = m_world->folder.filePath(u"work/file.mdb"_s);
        m_given = m_world->folder.filePath(u"given/file.mdb"_s);
    }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void aForeignFileWithALogIsRefusedAsItStands()
    {
        {
            ForeignFile file(m_work);
            file.run("PRAGMA journal_mode = WAL").run(TheirTable).run(TheirRows);
            giveAsItIs();
        }
        QVERIFY(QFile::exists(m_given + u"-wal"_s));
        refuses(errors::TableNotFound);
    }

    void aForeignFileInModeOfALogIsRefusedAsItStands()
    {
        ForeignFile(m_work).run("PRAGMA journal_mode = WAL").run(TheirTable);
        giveAsItIs();
        QVERIFY(!QFile::exists(m_given + u"-wal"_s));
        refuses(errors::TableNotFound);
    }

    void aForeignFileInTheMiddleOfAWriteIsRefusedAsItStands()
    {
        {
            ForeignFile file(m_work);
            file.run(TheirTable).run("PRAGMA cache_size = 1").run("BEGIN").run(TheirRows);
            giveAsItIs();
        }
        QVERIFY(QFile::exists(m_given + u"-journal"_s));
        refuses(errors::TableNotFound);
    }

    void ourFileIsRepairedFromItsJournal()
    {
        {
            ForeignFile file(m_world->createDatabase(u"work/file.mdb"_s));
            file.run(OurRow)
                .run("PRAGMA cache_size = 1")
                .run("BEGIN")
                .run("DELETE FROM Main")
                .run(OurManyRows);
            giveAsItIs();
        }
        QVERIFY(QFile::exists(m_given + u"-journal"_s));
        QVERIFY(OpenDbFile(m_world->session, m_given));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList(u"水|M-991231-001|"_s));
        QCOMPARE(entries(), QStringList(u"file.mdb"_s));
        QCOMPARE(ForeignFile(m_given).ask("PRAGMA integrity_check"), QStringList(u"ok"_s));
    }

    void whatIsSeenBeforeTheRepairIsWhatStandsAfterIt()
    {
        {
            ForeignFile file(m_world->createDatabase(u"work/file.mdb"_s));
            file.run(OurManyRows)
                .run("PRAGMA cache_size = 1")
                .run("BEGIN")
                .run("DROP TABLE Main")
                .run(TheirTable);
            file.run(TheirRows);
            giveAsItIs();
        }
        const auto before = given();
        {
            const auto database = Database::inspect(m_given);
            const auto rows = RecordSet::openTable(database, schema::Main());
            QCOMPARE(rows->recordCount(), 2000);
            QVERIFY(errorOf([&] { TestWorld::addRow(rows, {u"a"_s, u"M-991231-001"_s}); }) != 0);
            QCOMPARE(rows->recordCount(), 2000);
            QCOMPARE(given(), before);
            database->beginUse();
            QCOMPARE(rows->recordCount(), 2000);
            TestWorld::addRow(rows, {u"a"_s, u"M-991231-001"_s});
        }
        QCOMPARE(ForeignFile(m_given).ask("SELECT count(*) FROM Main"), QStringList(u"2001"_s));
    }

    void ourFileKeepsWhatStandsInItsLog()
    {
        {
            ForeignFile file(m_world->createDatabase(u"work/file.mdb"_s));
            file.run("PRAGMA journal_mode = WAL").run(OurRow);
            giveAsItIs();
        }
        QVERIFY(QFile::exists(m_given + u"-wal"_s));
        QVERIFY(OpenDbFile(m_world->session, m_given));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList(u"水|M-991231-001|"_s));
        QCOMPARE(entries(), QStringList(u"file.mdb"_s));
        QCOMPARE(ForeignFile(m_given).ask("PRAGMA journal_mode"), QStringList(u"delete"_s));
    }

    void aJournalThatNamesAFurtherFileIsRefusedUnread()
    {
        {
            ForeignFile file(m_world->createDatabase(u"work/file.mdb"_s));
            file.run("PRAGMA cache_size = 1").run("BEGIN").run(OurManyRows);
            giveAsItIs();
        }
        write(victim(), "precious");
        QFile journal(m_given + u"-journal"_s);
        QVERIFY(journal.open(QIODevice::Append));
        journal.write(ending(victim().toUtf8()));
        journal.close();
        const auto before = given();
        try {
            Database::open(m_given);
            QFAIL("it opened");
        } catch (const Error& error) {
            QCOMPARE(error.number, errors::NotADatabase);
            QVERIFY(compareText(error.description,
                                u"データベースは、他のファイルにもまたがる書き込みの途中で中断されています。"
                                u"書き込みをしていたプログラムで修復してからやり直してください。"));
        }
        QCOMPARE(given(), before);
    }

    void aJournalThatIsWipedOutIsNobodysJournal()
    {
        ForeignFile(m_world->createDatabase(u"work/file.mdb"_s)).run(OurRow);
        giveAsItIs();
        write(m_given + u"-journal"_s, QByteArray(600, '\0') + ending(victim().toUtf8()));
        write(victim(), "precious");
        QVERIFY(OpenDbFile(m_world->session, m_given));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList(u"水|M-991231-001|"_s));
        QCOMPARE(given().value(u"victim.txt"_s), QByteArray("precious"));
    }

private:
    QString victim() const { return m_world->folder.filePath(u"given/victim.txt"_s); }
    void write(const QString& path, const QByteArray& bytes) const
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }
    /// What ends a journal that names `file`.
    static QByteArray ending(const QByteArray& file)
    {
        const auto number = [](quint32 value) {
            QByteArray bytes(4, '\0');
            qToBigEndian(value, bytes.data());
            return bytes;
        };
        const quint32 sum =
            std::accumulate(file.begin(), file.end(), quint32(0),
                            [](quint32 so_far, char byte) { return so_far + static_cast<quint32>(byte); });
        return number(1073741824 / 4096 + 1) + file + number(static_cast<quint32>(file.size())) +
               number(sum) + QByteArray("\xD9\xD5\x05\xF9\x20\xA1\x63\xD7", 8);
    }
    /// Copies the file with what stands beside it, as an abrupt end at this moment would leave it.
    void giveAsItIs() const
    {
        const QDir work = QFileInfo(m_work).dir();
        for (const QString& name : work.entryList({u"file.mdb"_s, u"file.mdb-journal"_s, u"file.mdb-wal"_s}))
            QVERIFY(QFile::copy(work.filePath(name), QFileInfo(m_given).dir().filePath(name)));
    }
    QStringList entries() const { return QFileInfo(m_given).dir().entryList(QDir::Files); }
    /// The files given and what they hold.
    QMap<QString, QByteArray> given() const
    {
        QMap<QString, QByteArray> files;
        for (const QString& name : entries()) {
            QFile file(QFileInfo(m_given).dir().filePath(name));
            if (file.open(QIODevice::ReadOnly))
                files.insert(name, file.readAll());
        }
        return files;
    }
    void refuses(qint32 number)
    {
        const auto before = given();
        m_world->dialogs.expect(failureBox(u"OpenDbFile"_s, number));
        QVERIFY(!OpenDbFile(m_world->session, m_given));
        QCOMPARE(given(), before);
    }

    std::unique_ptr<TestWorld> m_world;
    QString m_work;
    QString m_given;
};

QTEST_GUILESS_MAIN(TestForeignJournals)
#include "test_foreign_journals.moc"
