// Databases whose names are long: they work, or are refused in time and with the truth.
#include "app/base/error.h"
#include "store/database.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

class TestLongPaths : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_world = std::make_unique<TestWorld>(); }
    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void aLongPathWorks_data()
    {
        QTest::addColumn<int>("bytes");
        for (const int bytes : {480, 500, 503, 504, 505, 512, 513, 600, 1200, 3000})
            QTest::addRow("%d bytes", bytes) << bytes;
    }
    void aLongPathWorks()
    {
#ifdef Q_OS_UNIX
        QFETCH(int, bytes);
        const QString path = pathOf(bytes);
        QCOMPARE(path.toUtf8().size(), bytes);
        m_world->dialogs.expect({.text = u"Quillon 用のデータベースを作成しました。"_s});
        CreateDbFile(m_world->session, path);
        QVERIFY(m_world->session.OpenDb);
        TestWorld::addRow(m_world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u""_s});
        QVERIFY(OpenDbFile(m_world->session, path));
        QCOMPARE(m_world->session.OpenDb->path(), path);
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList(u"水|M-991231-001|"_s));
        {
            // The lock is that of the file, not that of a name.
            const ForeignLock lock(*m_world->session.OpenDb, ForeignLock::Kind::Writing);
            QCOMPARE(errorOf([&] {
                         TestWorld::addRow(m_world->session.RsMain, {u"火"_s, u"M-991231-002"_s, u""_s});
                     }),
                     errors::Locked);
        }
        TestWorld::addRow(m_world->session.RsMain, {u"火"_s, u"M-991231-002"_s, u""_s});
        QCOMPARE(QFileInfo(path).dir().entryList(QDir::Files), QStringList(QFileInfo(path).fileName()));
#else
        QSKIP("Names have another limit here.");
#endif
    }

    void aShortLinkToALongPathWorks()
    {
#ifdef Q_OS_UNIX
        const QString path = pathOf(700);
        QVERIFY(QFile::rename(m_world->createDatabase(), path));
        const QString link = m_world->folder.filePath(u"link.mdb"_s);
        QVERIFY(QFile::link(path, link));
        QVERIFY(OpenDbFile(m_world->session, link));
        TestWorld::addRow(m_world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u""_s});
        QCOMPARE(m_world->session.RsMain->recordCount(), 1);
#else
        QSKIP("Names have another limit here.");
#endif
    }

    void anUnfinishedWriteUnderALongPathIsUndone()
    {
#ifdef Q_OS_UNIX
        const QString path = pathOf(700);
        const QString source = m_world->createDatabase();
        {
            const auto database = Database::open(source);
            database->connection().execute(u"PRAGMA cache_size = 1"_s);
            database->connection().execute(u"BEGIN"_s);
            database->connection().execute(
                u"INSERT INTO Main WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000)"
                u" SELECT hex(randomblob(20)), 'x' || i, hex(randomblob(100)) FROM n"_s);
            QVERIFY(QFile::copy(source, path));
            QVERIFY(QFile::copy(source + u"-journal"_s, path + u"-journal"_s));
        }
        QVERIFY(OpenDbFile(m_world->session, path));
        QCOMPARE(m_world->session.RsMain->recordCount(), 0);
        QVERIFY(!QFile::exists(path + u"-journal"_s));
#else
        QSKIP("Names have another limit here.");
#endif
    }

    void aNameWithoutRoomForItsJournalIsRefusedBeforeAnythingIsMade()
    {
#ifdef Q_OS_UNIX
        const QString name = QString(82, u'水') + u".mdb"_s; // 250 bytes of at most 255
        m_world->dialogs.expect(
            {.text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\n"
                     u"EXPLANATION : データベースのファイル名またはフォルダの名前が長すぎて扱えません。"
                     u"短い名前にするか、別のフォルダに移してからやり直してください。"_s,
             .title = u"Quillon 障害対策部"_s});
        CreateDbFile(m_world->session, m_world->folder.filePath(name));
        QCOMPARE(QDir(m_world->folder.path()).entryList(QDir::Files), QStringList());
        QVERIFY(QFile::rename(m_world->createDatabase(), m_world->folder.filePath(name)));
        QCOMPARE(errorOf([&] { Database::open(m_world->folder.filePath(name)); }), errors::PathFileAccess);
#else
        QSKIP("Names have another limit here.");
#endif
    }

private:
    /// A path of so many bytes whose folders are there, with Japanese names.
    QString pathOf(int bytes) const
    {
        QString folder = m_world->folder.path();
        constexpr int Longest = 200;
        while (bytes - folder.toUtf8().size() > Longest + 20) {
            folder += u'/' + QString(Longest / 3, u'棚');
            QDir().mkpath(folder);
        }
        const int room = bytes - static_cast<int>(folder.toUtf8().size()) - 5;
        return folder + u'/' + QString(room / 3, u'水') + QString(room % 3, u'x') + u".mdb"_s;
    }

    std::unique_ptr<TestWorld> m_world;
};

QTEST_GUILESS_MAIN(TestLongPaths)
#include "test_long_paths.moc"
