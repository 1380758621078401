#include "core/data_records.h"
#include "store/record_set.h"
#include "tests/support/failure_box.h"
#include "tests/support/journaled_writes.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Water = u"M-991231-001"_s;
const QString Ice = u"M-991231-002"_s;
const QString Book = u"R-991231-001"_s;
const QString File = u"F-991231-001"_s;

const MessageBox NotFound{.text = u"指定されたデータが見つかりませんでした。"_s,
                          .title = u"Quillon データ調査分析部"_s};

MessageBox question(const QString& name)
{
    return {
        .text = u"<"_s + name + u"> を削除しますか。"_s, .title = u"Quillon"_s, .buttons = Buttons::OkCancel};
}

} // namespace

class TestDeletion : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;
    QString path;

    Session& session() { return world->session; }
    Database& database() { return *world->session.OpenDb; }
    QStringList definitions() { return TestWorld::rowsOf(session().RsMain); }
    QStringList links() { return TestWorld::rowsOf(session().RsLink); }
    QStringList memberships() { return TestWorld::rowsOf(session().RsCategory); }
    void executeElsewhere(const QString& sql) { Database::open(path)->connection().execute(sql); }

private Q_SLOTS:
    /// Water, ice, a book and a file; water is linked to all others and to itself, in both directions, and filed
    /// twice.
    void init()
    {
        world = std::make_unique<TestWorld>();
        path = world->createDatabase();
        world->openDatabase(path);
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        TestWorld::addRow(session().RsMain, {u"氷"_s, Ice, u"固体"_s});
        TestWorld::addRow(session().RsRefDoc, {u"水の本"_s, Book, u"…"_s});
        TestWorld::addRow(session().RsRefFile, {u"水.txt"_s, File, u"未入力"_s});
        for (const auto& [source, target] :
             {std::pair(Water, Ice), std::pair(Book, Water), std::pair(Water, Water), std::pair(Ice, Book)})
            TestWorld::addRow(session().RsLink, {source, target});
        for (const auto& [category, datum] :
             {std::pair(u"A"_s, Water), std::pair(u"B-A"_s, Water), std::pair(u"A"_s, Ice)})
            TestWorld::addRow(session().RsCategory, {category, datum});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void boxesFollowTheMode_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("asks");
        QTest::addColumn<bool>("tells");
        QTest::newRow("silent") << 0 << false << false;
        QTest::newRow("asks") << 1 << true << false;
        QTest::newRow("tells") << 2 << false << true;
        QTest::newRow("asks and tells") << 3 << true << true;
        QTest::newRow("more tells") << 4 << false << true;
        QTest::newRow("less is silent") << -1 << false << false;
    }

    void boxesFollowTheMode()
    {
        QFETCH(int, mode);
        QFETCH(bool, asks);
        QFETCH(bool, tells);
        if (asks)
            world->dialogs.expect(question(u"水"_s));
        if (tells) {
            world->dialogs.expect(
                {.text = u"< 水 >を削除しました。"_s, .title = u"Quillon 定義データ管理部"_s});
            // Everything is gone before it is told.
            world->dialogs.meanwhile([&] {
                QCOMPARE(definitions(), QStringList(u"氷|M-991231-002|固体"_s));
                QCOMPARE(links(), QStringList(u"M-991231-002|R-991231-001"_s));
                QCOMPARE(memberships(), QStringList(u"A|M-991231-002"_s));
                QVERIFY(othersMayWrite(path));
            });
        }
        QVERIFY(DeleteData(session(), Water, static_cast<qint16>(mode)));
        QCOMPARE(definitions(), QStringList(u"氷|M-991231-002|固体"_s));
        QCOMPARE(links(), QStringList(u"M-991231-002|R-991231-001"_s));
        QCOMPARE(memberships(), QStringList(u"A|M-991231-002"_s));
    }

    void rowAndWhatHangsOnItGoAsOneWriteBeforeTheNotice()
    {
        const JournaledWrites writes(database(), world->calls);
        world->dialogs.expect(question(u"水"_s));
        world->dialogs.expect({.text = u"< 水 >を削除しました。"_s, .title = u"Quillon 定義データ管理部"_s});
        QVERIFY(DeleteData(session(), Water, 3));
        QVERIFY(compareLines(
            world->calls.lines(),
            {messageBoxCall(u"<水> を削除しますか。"_s), u"delete Main 水|M-991231-001|液体"_s,
             u"delete Link M-991231-001|M-991231-002"_s, u"delete Link R-991231-001|M-991231-001"_s,
             u"delete Link M-991231-001|M-991231-001"_s, u"delete Category A|M-991231-001"_s,
             u"delete Category B-A|M-991231-001"_s, u"commit"_s,
             messageBoxCall(u"< 水 >を削除しました。"_s)}));
    }

    void whatHangsOnAMissingRowGoesAsOneWriteBeforeThatIsTold()
    {
        executeElsewhere(u"DELETE FROM Main WHERE Name = '水'"_s);
        const JournaledWrites writes(database(), world->calls);
        world->dialogs.expect(NotFound);
        QVERIFY(!DeleteData(session(), Water, 0));
        QCOMPARE(world->calls.about(u"delete Link"_s).size(), 3);
        QCOMPARE(world->calls.about(u"delete Category"_s).size(), 2);
        QCOMPARE(world->calls.lines().mid(5), QStringList({u"commit"_s, messageBoxCall(NotFound.text)}));
    }

    void eachKindIsToldUnderItsOwnTitle_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("title");
        QTest::newRow("definition") << Water << u"水"_s << u"Quillon 定義データ管理部"_s;
        QTest::newRow("document") << Book << u"水の本"_s << u"Quillon 文献データ管理部"_s;
        QTest::newRow("file") << File << u"水.txt"_s << u"Quillon ファイルデータ管理部"_s;
    }

    void eachKindIsToldUnderItsOwnTitle()
    {
        QFETCH(QString, identifier);
        QFETCH(QString, name);
        QFETCH(QString, title);
        world->dialogs.expect(question(name));
        world->dialogs.expect({.text = u"< "_s + name + u" >を削除しました。"_s, .title = title});
        QVERIFY(DeleteData(session(), identifier, 3));
    }

    void cancelKeepsEverything_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("1") << 1;
        QTest::newRow("3") << 3;
    }

    void cancelKeepsEverything()
    {
        QFETCH(int, mode);
        const qint64 before = database().connection().totalChanges();
        world->dialogs.expect(question(u"水"_s), Answer::Cancel);
        QVERIFY(!DeleteData(session(), Water, static_cast<qint16>(mode)));
        QCOMPARE(database().connection().totalChanges(), before);
    }

    void nameInAngleBracketsIsShownAsItIs()
    {
        TestWorld::addRow(session().RsMain, {u"<b>%1"_s, u"M-991231-003"_s, u""_s});
        world->dialogs.expect(question(u"<b>%1"_s));
        world->dialogs.expect(
            {.text = u"< <b>%1 >を削除しました。"_s, .title = u"Quillon 定義データ管理部"_s});
        QVERIFY(DeleteData(session(), u"M-991231-003"_s, 3));
    }

    void datumWhoseRowIsGoneLosesItsRelations_data() { cancelKeepsEverything_data(); }

    void datumWhoseRowIsGoneLosesItsRelations()
    {
        QFETCH(int, mode);
        executeElsewhere(u"DELETE FROM Main WHERE Name = '水'"_s);
        world->dialogs.expect(question(u"不明"_s));
        world->dialogs.expect(NotFound);
        QVERIFY(!DeleteData(session(), Water, static_cast<qint16>(mode)));
        QCOMPARE(links(), QStringList(u"M-991231-002|R-991231-001"_s));
        QCOMPARE(memberships(), QStringList(u"A|M-991231-002"_s));
        QCOMPARE(definitions().size(), 1);
    }

    void rowThatGoesDuringTheQuestionIsNotFound()
    {
        world->dialogs.expect(question(u"水"_s));
        world->dialogs.meanwhile([&] { executeElsewhere(u"DELETE FROM Main WHERE Name = '水'"_s); });
        world->dialogs.expect(NotFound);
        QVERIFY(!DeleteData(session(), Water, 3));
        QCOMPARE(links().size(), 1);
    }

    void emptyTableHasNoDatum()
    {
        executeElsewhere(u"DELETE FROM Main"_s);
        world->dialogs.expect(NotFound);
        QVERIFY(!DeleteData(session(), Water, 0));
    }

    void identifierMustMatchExactly()
    {
        for (const QString& almost : {u"M-991231-00"_s, u"M-991231-0011"_s, u"Ｍ-991231-001"_s}) {
            if (almost.startsWith(u'M'))
                world->dialogs.expect(NotFound);
            else
                world->dialogs.expect(failureBox(u"DeleteData"_s, 91));
            QVERIFY(!DeleteData(session(), almost, 0));
        }
        QCOMPARE(definitions().size(), 2);
        QCOMPARE(links().size(), 4);
    }

    void unknownKindIsReportedAndNothingIsTouched_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::newRow("another letter") << u"X-991231-001"_s;
        QTest::newRow("small letter") << u"m-991231-001"_s;
        QTest::newRow("nothing") << QString();
    }

    void unknownKindIsReportedAndNothingIsTouched()
    {
        QFETCH(QString, identifier);
        TestWorld::addRow(session().RsLink, {identifier, Water});
        const qint64 before = database().connection().totalChanges();
        world->dialogs.expect(question(u"不明"_s));
        world->dialogs.expect(failureBox(u"DeleteData"_s, 91));
        QVERIFY(!DeleteData(session(), identifier, 3));
        QCOMPARE(database().connection().totalChanges(), before);
        QCOMPARE(world->eventLog.lines.size(), 1);
    }

    void identifierWithAQuoteIsReported()
    {
        TestWorld::addRow(session().RsLink, {u"M'"_s, Water});
        world->dialogs.expect(failureBox(u"GetDataName"_s, 3075));
        QVERIFY(!DeleteData(session(), u"M'"_s, 1));
        world->dialogs.expect(failureBox(u"DeleteData"_s, 3075));
        QVERIFY(!DeleteData(session(), u"M'"_s, 0));
        QCOMPARE(links().size(), 5);
    }

    void datumThatCannotBeReadIsNotAskedAbout()
    {
        {
            const ForeignLock lock(*session().OpenDb, ForeignLock::Kind::Exclusive);
            world->dialogs.expect(failureBox(u"GetDataName"_s, 3260));
            QCOMPARE(DeleteDatum(session(), Water, 3), Deletion::Kept);
        }
        QCOMPARE(links().size(), 4);
    }

    void withoutDatabaseItIsReported()
    {
        session().RsMain.reset();
        world->dialogs.expect(failureBox(u"DeleteData"_s, 91));
        QVERIFY(!DeleteData(session(), Water, 0));
        QCOMPARE(links().size(), 4);
        world->dialogs.expect(failureBox(u"DeleteData"_s, 91));
        QCOMPARE(DeleteManyData(session(), {{.identifier = Water, .name = u"水"_s}}, [] {}),
                 std::vector<Deletion>{Deletion::Kept});
    }

    void missingTableOfRelationsIsReportedAndTheDatumStays_data()
    {
        QTest::addColumn<bool>("links");
        QTest::newRow("links") << true;
        QTest::newRow("memberships") << false;
    }

    void missingTableOfRelationsIsReportedAndTheDatumStays()
    {
        QFETCH(bool, links);
        const QStringList before = this->links() + memberships();
        const auto table =
            std::exchange(links ? session().RsLink : session().RsCategory, std::shared_ptr<RecordSet>());
        world->dialogs.expect(failureBox(u"DeleteData"_s, 91));
        QVERIFY(!DeleteData(session(), Water, 2));
        QCOMPARE(definitions().size(), 2);
        (links ? session().RsLink : session().RsCategory) = table;
        QCOMPARE(this->links() + memberships(), before);
    }

    void refusedRowKeepsItsRelations_data()
    {
        QTest::addColumn<Refusal>("refusal");
        QTest::newRow("of the statement") << Refusal::OfTheStatement;
        QTest::newRow("of the transaction") << Refusal::OfTheTransaction;
    }

    void refusedRowKeepsItsRelations()
    {
        QFETCH(Refusal, refusal);
        refuseDeletion(database(), u"Main"_s, u"OLD.Name = '水'"_s, refusal);
        world->dialogs.expect(failureBox(u"DeleteData"_s, 5));
        QVERIFY(!DeleteData(session(), Water, 2));
        QCOMPARE(definitions().size(), 2);
        QCOMPARE(links().size(), 4);
        QCOMPARE(memberships().size(), 3);
    }

    void refusedRelationKeepsTheWholeDatum_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<Refusal>("refusal");
        QTest::newRow("link") << u"Link"_s << Refusal::OfTheStatement;
        QTest::newRow("membership") << u"Category"_s << Refusal::OfTheStatement;
        QTest::newRow("membership, everything") << u"Category"_s << Refusal::OfTheTransaction;
    }

    void refusedRelationKeepsTheWholeDatum()
    {
        QFETCH(QString, table);
        QFETCH(Refusal, refusal);
        const QStringList before = definitions() + links() + memberships();
        refuseDeletion(database(), table, u"OLD.Object_ID = 'M-991231-001'"_s, refusal);
        world->dialogs.expect(failureBox(u"DeleteData"_s, 5));
        world->dialogs.meanwhile([&] { QVERIFY(othersMayWrite(path)); });
        QVERIFY(!DeleteData(session(), Water, 2));
        QCOMPARE(definitions() + links() + memberships(), before);
        allowDeletion(database(), table);
        QVERIFY(DeleteData(session(), Water, 0));
        QCOMPARE(definitions().size(), 1);
    }

    void datumThatTakesTheIdentifierDuringTheQuestionStays()
    {
        world->dialogs.expect(question(u"水"_s));
        world->dialogs.meanwhile(
            [&] { executeElsewhere(u"UPDATE Main SET Name = '湯' WHERE Name = '水'"_s); });
        world->dialogs.expect(NotFound);
        QCOMPARE(DeleteDatum(session(), Water, 3), Deletion::Gone);
        QCOMPARE(definitions().first(), u"湯|M-991231-001|液体"_s);
        QCOMPARE(links().size(), 4);
        QCOMPARE(memberships().size(), 3);
    }

    void lockedFileIsReportedAndNothingIsDeleted_data()
    {
        QTest::addColumn<ForeignLock::Kind>("kind");
        QTest::newRow("written elsewhere") << ForeignLock::Kind::Writing;
        QTest::newRow("read elsewhere") << ForeignLock::Kind::Reading;
    }

    void lockedFileIsReportedAndNothingIsDeleted()
    {
        QFETCH(ForeignLock::Kind, kind);
        {
            const ForeignLock lock(database(), kind);
            world->dialogs.expect(question(u"水"_s));
            world->dialogs.expect(failureBox(u"DeleteData"_s, 3260));
            QVERIFY(!DeleteData(session(), Water, 3));
        }
        QCOMPARE(definitions().size(), 2);
        QCOMPARE(links().size(), 4);
        QCOMPARE(memberships().size(), 3);
        QVERIFY(DeleteData(session(), Water, 0));
    }

    void lockThatComesWithTheNoticeLeavesNothingBehind()
    {
        std::unique_ptr<ForeignLock> lock;
        world->dialogs.expect({.text = u"< 水 >を削除しました。"_s, .title = u"Quillon 定義データ管理部"_s});
        world->dialogs.meanwhile(
            [&] { lock = std::make_unique<ForeignLock>(database(), ForeignLock::Kind::Writing); });
        QVERIFY(DeleteData(session(), Water, 2));
        lock.reset();
        QCOMPARE(definitions().size(), 1);
        QCOMPARE(links().size(), 1);
        QCOMPARE(memberships().size(), 1);
    }

    void copiedFileStaysInItsFolder()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        QFile copy(world->folder.filePath(u"RefFile/水.txt"_s));
        QVERIFY(copy.open(QIODevice::WriteOnly));
        QVERIFY(DeleteData(session(), File, 0));
        QCOMPARE(session().RsRefFile->recordCount(), 0);
        QVERIFY(copy.exists());
    }
};

QTEST_GUILESS_MAIN(TestDeletion)
#include "test_deletion.moc"
