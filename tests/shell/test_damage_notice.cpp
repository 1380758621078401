#include "app/shell/program.h"
#include "store/database.h"
#include "store/kept/copies.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/sqlite/transaction.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_ports.h"
#include "tests/support/test_world.h"
#include "tests/support/window_world.h"
#include "ui/main/frmMainMenu.h"
#include "ui/restore/frmRestore.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// Damage as a person hears of it in the program.
class TestDamageNotice : public QObject
{
    Q_OBJECT

    /// A program that keeps copies, and a database with documents beside a copy of it.
    struct World {
        World() : path(folder.filePath(u"知識.mdb"_s))
        {
            const auto database = Database::create(path);
            for (const TableSchema* table : schema::all())
                database->execute(table->statement);
            const auto documents = RecordSet::openTable(database, schema::RefDoc());
            sqlite::Transaction write(database->connection());
            for (int i = 0; i < 300; ++i)
                TestWorld::addRow(documents, {u"文献"_s, u"R-991231-%1"_s.arg(i), QString(1000, u'水')});
            write.commit();
            kept::makeCopy({.place = {folder.filePath(u"kept"_s), path},
                            .fileFolder = {},
                            .now = [] { return QDateTime(QDate(2026, 1, 31), QTime(12, 0)); },
                            .goesOn = [] { return true; }});
            dialogs.complainWhile([this] {
                return program.session().OpenDb && program.session().OpenDb->connection().holdsLock();
            });
        }
        /// Damages the second half of the file, in which there are documents only.
        void damage() const
        {
            QFile file(path);
            const qint64 half = QFileInfo(path).size() / 2;
            if (!file.open(QIODevice::ReadWrite) || !file.seek(half) ||
                file.write(QByteArray(half, '?')) != half)
                qFatal("the file cannot be damaged");
        }
        /// Reads what is damaged.
        qint32 readDocuments()
        {
            return errorOf([this] {
                program.session().RsRefDoc->forEachRow(
                    {2}, [](const RecordSet::Row& row) { return !row.text(0).isEmpty(); });
            });
        }

        QTemporaryDir folder;
        QString path;
        CallLog calls;
        ScriptedDialogs dialogs{calls};
        MemoryEventLog eventLog{calls};
        FixedClock clock;
        RecordingDesktop desktop{calls};
        RealFiles files{calls};
        Program program{{.dialogs = dialogs,
                         .eventLog = eventLog,
                         .clock = clock,
                         .desktop = desktop,
                         .files = files,
                         .keptFolder = folder.filePath(u"kept"_s),
                         .copies = kept::CopyTimes{.afterOpening = std::chrono::hours(1),
                                                   .between = std::chrono::hours(1)}},
                        folder.path()};
    };

    static MessageBox notice()
    {
        return {
            .text =
                u"データベース「知識.mdb」が壊れています。\r\n"
                u"2026/01/31 12:00:00 に作成した正常な控えがあります。\r\n"
                u"控えを取り出すには、quillon --restore で復元画面を開き、［控え］の一覧から選んでください。"_s,
            .title = u"Quillon 障害対策部"_s};
    }

private Q_SLOTS:
    void whatAnOperationMeetsWithIsToldOnce()
    {
        World world;
        bool isTold = false;
        world.program.mainWindow().showModeless();
        world.program.mainWindow().openChosenFile(world.path);
        world.program.session().OpenDb->connection().execute(u"PRAGMA shrink_memory"_s);
        world.damage();
        QCOMPARE(world.readDocuments(), errors::NotADatabase);
        world.dialogs.expect(notice());
        world.dialogs.meanwhile([&] { isTold = true; });
        QTRY_VERIFY(isTold);
        QCOMPARE(world.readDocuments(), errors::NotADatabase);
        WindowWorld::processEvents();
        QCOMPARE(world.dialogs.takeComplaints(), QStringList());
    }

    void nobodyWaitsWhileItIsRead()
    {
        World world;
        bool isTold = false;
        world.program.mainWindow().showModeless();
        world.program.mainWindow().openChosenFile(world.path);
        sqlite::Connection& connection = world.program.session().OpenDb->connection();
        connection.execute(u"PRAGMA shrink_memory"_s);
        world.damage();
        QCOMPARE(world.readDocuments(), errors::NotADatabase);
        // The notice waits for the end of a pass that goes on while events are processed.
        world.dialogs.expect(notice());
        world.dialogs.meanwhile([&] { isTold = true; });
        connection.execute(u"BEGIN"_s);
        const auto pass = connection.prepareOwn(u"SELECT count(*) FROM Category"_s);
        QVERIFY(pass->step());
        WindowWorld::processEvents();
        QVERIFY(!isTold);
        pass->reset();
        connection.execute(u"COMMIT"_s);
        QTRY_VERIFY(isTold);
        QCOMPARE(world.dialogs.takeComplaints(), QStringList());
    }

    void anOpeningThatFailsNamesTheCopy()
    {
        World world;
        bool isTold = false;
        QFile file(world.path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.write(QByteArray(4096, '?'));
        file.close();
        world.program.mainWindow().showModeless();
        world.dialogs.expect(failureBox(u"OpenDbFile"_s, errors::NotADatabase));
        world.program.mainWindow().openChosenFile(world.path);
        world.dialogs.expect(notice());
        world.dialogs.meanwhile([&] { isTold = true; });
        QTRY_VERIFY(isTold);
        QCOMPARE(world.dialogs.takeComplaints(), QStringList());
    }

    void theWindowToTakeThingsBackTellsWhatTurnsOutLater()
    {
        World world;
        bool isTold = false;
        world.program.restoreWindow().showModeless();
        world.program.restoreWindow().showDatabase(world.path);
        world.program.session().OpenDb->connection().execute(u"PRAGMA shrink_memory"_s);
        world.damage();
        QCOMPARE(world.readDocuments(), errors::NotADatabase);
        MessageBox told = notice();
        told.text = u"データベース「知識.mdb」が壊れています。\r\n"
                    u"2026/01/31 12:00:00 に作成した正常な控えがあります。\r\n"
                    u"［控え］の一覧から控えを取り出すことができます。"_s;
        world.dialogs.expect(told);
        world.dialogs.meanwhile([&] { isTold = true; });
        QTRY_VERIFY(isTold);
        QCOMPARE(world.dialogs.takeComplaints(), QStringList());
    }

    void theWindowToTakeThingsBackSaysItItself()
    {
        World world;
        QFile file(world.path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.write(QByteArray(4096, '?'));
        file.close();
        world.program.restoreWindow().showModeless();
        world.dialogs.expect(failureBox(u"OpenDbFile"_s, errors::NotADatabase));
        world.dialogs.expect(MessageBox{.text = u"データベース「知識.mdb」を展開できませんでした。\r\n"
                                                u"［控え］の一覧から控えを取り出すことができます。"_s,
                                        .title = u"Quillon データ復元部"_s});
        world.program.restoreWindow().showDatabase(world.path);
        WindowWorld::processEvents();
        QCOMPARE(world.dialogs.takeComplaints(), QStringList());
    }
};

QTEST_MAIN(TestDamageNotice)
#include "test_damage_notice.moc"
