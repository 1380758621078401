#include "app/base/ports/data_window.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/data_records.h"
#include "core/links.h"
#include "store/kept/history.h"
#include "store/kept/history_file.h"
#include "store/kept/history_writer.h"
#include "store/record_set.h"
#include "store/sqlite/transaction.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;
using kept::Event;
using kept::EventKind;
using kept::History;

/// What a history keeps of the program's writes, and what can be read of it.
class TestHistory : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;
    QString path;

    Session& session() { return world->session; }
    kept::Place place() const { return {world->folder.filePath(u"kept"_s), path}; }
    QStringList files() const { return QDir(place().history()).entryList(QDir::Files, QDir::Name); }

    static QString word(EventKind kind)
    {
        static const QStringList words{
            u"item deleted"_s,     u"item changed"_s,     u"link removed"_s,  u"taken out"_s,
            u"category deleted"_s, u"category renamed"_s, u"file replaced"_s, u"other"_s};
        return words.at(static_cast<int>(kind));
    }
    /// Newest first, each as "kind by operation: fields".
    QStringList told() const
    {
        History history(place());
        while (history.readOlder()) {
        }
        QStringList lines;
        for (const Event& event : history.events()) {
            const kept::StoredRow row = history.row(event);
            QStringList fields;
            for (int i = 0; i < static_cast<int>(row.fields.size()); ++i)
                fields << row.text(i);
            lines << word(event.kind) + u" by "_s + history.operation(event) + u": "_s + fields.join(u'|');
        }
        return lines;
    }
    void writeInPieces(qsizetype longFrom)
    {
        session().OpenDb->connection().watchRows(std::make_unique<kept::HistoryWriter>(
            std::make_shared<kept::HistoryFile>(place(), session().reporting), longFrom));
    }
    void deleteFrom(const std::shared_ptr<RecordSet>& rows) { rows->deleteEveryRow(); }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->keep();
        path = world->createDatabase();
        world->openDatabase(path);
        TestWorld::addRow(session().RsMain, {u"水"_s, u"M-991231-001"_s, u"流れるもの"_s});
        TestWorld::addRow(session().RsMain, {u"火"_s, u"M-991231-002"_s, u"燃えるもの"_s});
        TestWorld::addRow(session().RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(session().RsCategoryID, {u"A-A"_s, u"液体"_s});
        TestWorld::addRow(session().RsCategory, {u"A"_s, u"M-991231-001"_s});
        TestWorld::addRow(session().RsLink, {u"M-991231-001"_s, u"M-991231-002"_s});
    }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void aDatabaseInWhichNothingWasLostHasNoHistory()
    {
        QCOMPARE(told(), QStringList());
        QVERIFY(!QDir(place().folder()).exists());
    }

    void aDeletedItemIsOneEventWithAllThatHungOnIt()
    {
        QVERIFY(DeleteData(session(), u"M-991231-001"_s, 0));
        QCOMPARE(told(), QStringList(u"item deleted by DeleteData: 水|M-991231-001|流れるもの"_s));
        History history(place());
        QVERIFY(history.readOlder());
        QStringList beside;
        history.forEachRowBeside(history.events()[0], [&](const kept::StoredRow& row) {
            beside << row.table->name + u' ' + row.text(0) + u' ' + row.text(1);
        });
        QCOMPARE(beside, QStringList({u"Main 水 M-991231-001"_s, u"Link M-991231-001 M-991231-002"_s,
                                      u"Category A M-991231-001"_s}));
    }

    void aLongTextIsReadToItsEndWhateverFollowsIt()
    {
        QString text;
        for (int i = 0; i < 400'000; ++i)
            text += QChar(u'一' + i % 20'000);
        const auto rows = session().RsRefDoc;
        TestWorld::addRow(rows, {u"長い"_s, u"R-991231-001"_s, text});
        TestWorld::addRow(rows, {u"短い"_s, u"R-991231-002"_s, u"短い"_s});
        {
            sqlite::Transaction write(rows->database().connection());
            deleteFrom(rows);
            write.commit();
        }
        History history(place());
        while (history.readOlder()) {
        }
        QCOMPARE(history.events().size(), std::size_t{2});
        QStringList texts;
        for (const Event& event : history.events())
            texts << history.row(event).text(2);
        texts.sort();
        QCOMPARE(texts.size(), 2);
        QVERIFY(texts.contains(u"短い"_s));
        QVERIFY(texts.contains(text));
    }

    void onlyWhatWasWrittenToSinceIsReadOnceMore()
    {
        QVERIFY(DeleteData(session(), u"M-991231-001"_s, 0));
        writeInPieces(qsizetype{1} << 17); // a file of its own for what comes
        History known(place());
        QVERIFY(known.readOlder());
        QVERIFY(!History(place(), known).readOlder());
        QVERIFY(DeleteData(session(), u"M-991231-002"_s, 0));
        QCOMPARE(files().size(), 2);
        History newer(place(), known);
        QVERIFY(newer.readOlder());
        QCOMPARE(newer.events().size(), std::size_t{1});
        QCOMPARE(newer.row(newer.events()[0]).text(0), u"火"_s);
        QVERIFY(!newer.readOlder());
        // What goes on in a file that is known is read with it.
        TestWorld::addRow(session().RsMain, {u"土"_s, u"M-991231-003"_s, u""_s});
        QVERIFY(DeleteData(session(), u"M-991231-003"_s, 0));
        History latest(place(), newer);
        QVERIFY(latest.readOlder());
        QCOMPARE(latest.events().size(), std::size_t{3}); // the first file is unknown to the newer part
    }

    void deletionsAreFoundByTheIdentifier()
    {
        for (int times = 0; times < 2; ++times) {
            QVERIFY(DeleteData(session(), u"M-991231-001"_s, 0));
            TestWorld::addRow(session().RsMain, {u"水"_s, u"M-991231-001"_s, u""_s});
        }
        QVERIFY(DeleteData(session(), u"M-991231-002"_s, 0));
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        History history(place());
        const auto deletions = [&](EventKind kind, const QString& identifier) {
            int count = 0;
            history.forEachDeletion(kind, identifier,
                                    [&](const Event& event) { count += event.kind == kind ? 1 : 0; });
            return count;
        };
        QCOMPARE(deletions(EventKind::ItemDeleted, u"M-991231-001"_s), 0); // nothing has been read yet
        while (history.readOlder()) {
        }
        QCOMPARE(deletions(EventKind::ItemDeleted, u"M-991231-001"_s), 2);
        QCOMPARE(deletions(EventKind::ItemDeleted, u"M-991231-002"_s), 1);
        QCOMPARE(deletions(EventKind::CategoryDeleted, u"A-A"_s), 1);
        QCOMPARE(deletions(EventKind::CategoryDeleted, u"A"_s), 0);
        QCOMPARE(deletions(EventKind::CategoryDeleted, u"M-991231-001"_s), 0);
    }

    void theHourIsThatOfTheWrite()
    {
        world->clock.time = QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6));
        deleteFrom(session().RsMain);
        History history(place());
        QVERIFY(history.readOlder());
        QCOMPARE(history.events()[0].time, world->clock.time.toMSecsSinceEpoch());
    }

    void aChangedItemIsKeptAsItWas()
    {
        session().RsMain->moveFirst();
        session().RsMain->edit();
        session().RsMain->setField(2, u"H2O"_s);
        session().RsMain->update();
        QCOMPARE(told(), QStringList(u"item changed by : 水|M-991231-001|流れるもの"_s));
    }

    void savingWhatIsThereAlreadyIsNoEvent()
    {
        session().RsMain->moveFirst();
        session().RsMain->edit();
        session().RsMain->setField(2, u"流れるもの"_s);
        session().RsMain->update();
        QCOMPARE(told(), QStringList());
    }

    void aLinkThatIsRemovedIsAnEvent()
    {
        deleteFrom(session().RsLink);
        QCOMPARE(told(), QStringList(u"link removed by : M-991231-001|M-991231-002"_s));
    }

    void anItemTakenOutOfACategoryIsAnEvent()
    {
        ClassifyCategory(session(), u"A-A"_s, u"M-991231-001"_s);
        QCOMPARE(told(), QStringList(u"taken out by ClassifyCategory: A|M-991231-001"_s));
    }

    void aDeletedCategoryIsOneEventWithItsMembers()
    {
        QVERIFY(DeleteCategory(session(), u"A"_s, 0));
        QCOMPARE(told(), QStringList(u"category deleted by DeleteCategory: A|自然"_s));
    }

    void aRenamedCategoryIsAnEvent()
    {
        RenameCategory(session(), presentCategory(session(), u"A"_s), u"世界"_s);
        QCOMPARE(told(), QStringList(u"category renamed by : A|自然"_s));
    }

    void whatWasUndoneIsNoEvent()
    {
        {
            const sqlite::Transaction undone(session().OpenDb->connection());
            deleteFrom(session().RsMain);
        }
        QCOMPARE(told(), QStringList());
    }

    void theNewestEventComesFirstWhicheverProgramWroteIt()
    {
        const auto at = [&](int minute) {
            world->clock.time = QDateTime(QDate(2001, 2, 3), QTime(4, minute));
        };
        const auto rename = [](Session& of, const QString& name) {
            RenameCategory(of, presentCategory(of, u"A"_s), name);
        };
        TestWorld other;
        other.keeping = std::make_unique<kept::Keeping>(
            other.session.reporting,
            kept::KeepingOrder{.keptFolder = world->folder.filePath(u"kept"_s), .fileFolder = {}});
        other.session.keeper = other.keeping.get();
        other.openDatabase(path);
        at(1);
        rename(session(), u"二"_s);
        at(2);
        other.clock.time = world->clock.time;
        rename(other.session, u"三"_s);
        at(3);
        rename(session(), u"四"_s);
        QCOMPARE(files().size(), 2);
        QCOMPARE(told(), QStringList({u"category renamed by : A|三"_s, u"category renamed by : A|二"_s,
                                      u"category renamed by : A|自然"_s}));
    }

    void aLongTransactionIsWrittenInPiecesAndReadAsOne()
    {
        writeInPieces(1);
        sqlite::Transaction transaction(session().OpenDb->connection());
        deleteFrom(session().RsMain);
        // It is on the way already, and counts for nothing yet.
        QCOMPARE(files().size(), 1);
        QCOMPARE(told(), QStringList());
        deleteFrom(session().RsLink);
        transaction.commit();
        QCOMPARE(told(), QStringList({u"item deleted by : 火|M-991231-002|燃えるもの"_s,
                                      u"item deleted by : 水|M-991231-001|流れるもの"_s}));
    }

    void aLongTransactionThatIsUndoneNeverCounts()
    {
        writeInPieces(1);
        {
            const sqlite::Transaction undone(session().OpenDb->connection());
            deleteFrom(session().RsMain);
        }
        deleteFrom(session().RsLink);
        QCOMPARE(told(), QStringList(u"link removed by : M-991231-001|M-991231-002"_s));
    }

    void aTornEndHidesNothingElse()
    {
        deleteFrom(session().RsLink);
        deleteFrom(session().RsCategory);
        const QString file = place().history() + u'/' + files().at(0);
        const qint64 whole = QFile(file).size();
        for (const qint64 missing : {1, 2, 9, 20}) {
            QVERIFY(QFile::resize(file, whole - missing));
            QCOMPARE(told(), QStringList(u"link removed by : M-991231-001|M-991231-002"_s));
        }
    }

    void aDamagedRecordEndsItsFileAndNoOther()
    {
        deleteFrom(session().RsLink);
        const QString file = place().history() + u'/' + files().at(0);
        world->openDatabase(path);
        deleteFrom(session().RsCategory);
        QFile damaged(file);
        QVERIFY(damaged.open(QIODevice::ReadWrite));
        QVERIFY(damaged.seek(damaged.size() - 5));
        QVERIFY(damaged.putChar('?'));
        damaged.close();
        QCOMPARE(told(), QStringList(u"taken out by : A|M-991231-001"_s));
    }

    void aFileThatIsCutShortWhileItIsReadEndsThere()
    {
        for (int i = 0; i < 100; ++i) {
            session().RsMain->moveFirst();
            session().RsMain->edit();
            session().RsMain->setField(2, QString::number(i));
            session().RsMain->update();
        }
        const QString file = place().history() + u'/' + files().at(0);
        History history(place());
        QVERIFY(history.readOlder());
        QCOMPARE(history.events().size(), std::size_t{100});
        // Nobody does that; a disk may.
        QVERIFY(QFile::resize(file, 60));
        for (const Event& event : history.events())
            history.row(event);
        History later(place());
        QVERIFY(!later.readOlder());
        QVERIFY(!later.hasFailed());
    }

    void aLargeRecordIsReadAcrossTheBlocksOfItsFile()
    {
        const QString text(1'500'000, u'永');
        TestWorld::addRow(session().RsRefDoc, {u"長い文"_s, u"R-991231-001"_s, text});
        deleteFrom(session().RsRefDoc);
        deleteFrom(session().RsLink);
        QCOMPARE(told(), QStringList({u"link removed by : M-991231-001|M-991231-002"_s,
                                      u"item deleted by : 長い文|R-991231-001|"_s + text}));
    }

    void anythingAtAllMayLieAmongTheFiles()
    {
        deleteFrom(session().RsLink);
        for (const QByteArray& content :
             {QByteArray(), QByteArray("QLHIST1\n"), QByteArray("QLHIST1\n\xff\xff\xff\xff????"),
              QByteArray(5000, 'x')}) {
            QFile file(place().history() + u"/20010101T000000000-%1.log"_s.arg(content.size()));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
        }
        QCOMPARE(told(), QStringList(u"link removed by : M-991231-001|M-991231-002"_s));
    }

    void aFullFileIsFollowedByAnother()
    {
        session().OpenDb->connection().watchRows(
            std::make_unique<kept::HistoryWriter>(std::make_shared<kept::HistoryFile>(
                place(), session().reporting, kept::HistoryLimits{.fileSize = 1, .fileSeconds = 1000})));
        deleteFrom(session().RsLink);
        deleteFrom(session().RsCategory);
        QCOMPARE(files().size(), 2);
        QCOMPARE(told().size(), 2);
    }

    void anOldFileIsFollowedByAnother()
    {
        deleteFrom(session().RsLink);
        world->clock.time = world->clock.time.addDays(1);
        deleteFrom(session().RsCategory);
        QCOMPARE(files().size(), 2);
    }

    void whatCannotBeKeptIsToldOnceInTheLogAndTheOperationGoesOn()
    {
        QFile inTheWay(world->folder.filePath(u"kept"_s));
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        QVERIFY(DeleteData(session(), u"M-991231-001"_s, 0));
        QVERIFY(DeleteData(session(), u"M-991231-002"_s, 0));
        QCOMPARE(session().RsMain->recordCount(), 0);
        QCOMPARE(world->eventLog.lines.size(), 1);
        QCOMPARE(
            world->eventLog.lines[0],
            u"1999/12/31, 23:45, LOCATION : History, ErrorNumber : 75, DESCRIPTION : "_s +
                u"上書きまたは削除された内容を「%1」に残せませんでした。空き領域とアクセス権を確認してください。"
                u"操作そのものは行われました。"_s.arg(place().history()));
    }

#ifndef Q_OS_WIN // the folders of a person are closed to others there
    void theFilesAreForTheUserAlone()
    {
        deleteFrom(session().RsLink);
        const auto permissions = QFile::permissions(place().history() + u'/' + files().at(0));
        QVERIFY(!permissions.testAnyFlags(QFileDevice::ReadGroup | QFileDevice::ReadOther));
    }
#endif

    void theDatabaseFileHoldsNothingOfIt()
    {
        deleteFrom(session().RsLink);
        const auto tables =
            session().OpenDb->connection().prepareOwn(u"SELECT count(*) FROM sqlite_master WHERE sql > ''"_s);
        QVERIFY(tables->step());
        QCOMPARE(tables->number(0), 7);
    }
};

QTEST_GUILESS_MAIN(TestHistory)
#include "test_history.moc"
