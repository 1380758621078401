#include "core/links.h"
#include "core/listed_datum.h"
#include "store/record_set.h"
#include "tests/support/failure_box.h"
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

const MessageBox Duplicate{.text = u"既に同一のリンクが存在します。"_s, .title = u"Quillon"_s};
const MessageBox Unlinked{.text = u"<水> と <水の本> のリンクを削除しました。"_s, .title = u"Quillon"_s};

MessageBox question(const QString& source, const QString& target)
{
    return {.text = u"<"_s + source + u"> と<"_s + target + u"> をリンクしますか。"_s,
            .title = u"Quillon"_s,
            .buttons = Buttons::OkCancel};
}

MessageBox notice(const QString& source, const QString& target)
{
    return {.text = u"<"_s + source + u"> と <"_s + target + u"> をリンクしました。"_s,
            .title = u"Quillon"_s};
}

} // namespace

class TestLinks : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;
    QString path;

    Session& session() { return world->session; }
    Database& database() { return *world->session.OpenDb; }
    QStringList links() { return TestWorld::rowsOf(session().RsLink); }
    void addLink(const QString& source, const QString& target)
    {
        TestWorld::addRow(session().RsLink, {source, target});
    }
    static void addModes()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("asks");
        QTest::addColumn<bool>("tells");
        QTest::newRow("silent") << 0 << false << false;
        QTest::newRow("asks") << 1 << true << false;
        QTest::newRow("tells") << 2 << false << true;
        QTest::newRow("asks and tells") << 3 << true << true;
        QTest::newRow("more tells") << 4 << false << true;
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        path = world->createDatabase();
        world->openDatabase(path);
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        TestWorld::addRow(session().RsMain, {u"氷"_s, Ice, u"固体"_s});
        TestWorld::addRow(session().RsRefDoc, {u"水の本"_s, Book, u"…"_s});
        TestWorld::addRow(session().RsRefFile, {u"水.txt"_s, File, u"未入力"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void linkingBoxesFollowTheMode_data() { addModes(); }

    void linkingBoxesFollowTheMode()
    {
        QFETCH(int, mode);
        QFETCH(bool, asks);
        QFETCH(bool, tells);
        if (asks)
            world->dialogs.expect(question(u"水"_s, u"水の本"_s));
        if (tells) {
            world->dialogs.expect(notice(u"水"_s, u"水の本"_s));
            world->dialogs.meanwhile([&] { QCOMPARE(links().size(), 1); });
        }
        QVERIFY(LinkData(session(), Water, Book, static_cast<qint16>(mode)));
        QCOMPARE(links(), QStringList(u"M-991231-001|R-991231-001"_s)); // the source first
    }

    void datumThatWasReplacedDuringTheQuestionIsNotLinked()
    {
        for (const QString& replaced : {Water, Ice}) {
            world->dialogs.expect(question(u"水"_s, u"氷"_s));
            world->dialogs.meanwhile([&] {
                QVERIFY(session().RsMain->goTo(data_field::Object_ID, replaced));
                session().RsMain->deleteRow();
                TestWorld::addRow(session().RsMain, {u"火"_s, replaced, u"熱"_s});
            });
            world->dialogs.expect(failureBox(u"LinkData"_s, 3021));
            QVERIFY(!LinkData(session(), Water, Ice, 3));
            QCOMPARE(links(), QStringList());
            QVERIFY(session().RsMain->goTo(data_field::Object_ID, replaced));
            session().RsMain->edit();
            session().RsMain->setField(data_field::Name, replaced == Water ? u"水"_s : u"氷"_s);
            session().RsMain->update();
        }
    }

    void cancelAddsNothing()
    {
        for (const qint16 mode : {qint16{1}, qint16{3}}) {
            world->dialogs.expect(question(u"水"_s, u"氷"_s), Answer::Cancel);
            QVERIFY(!LinkData(session(), Water, Ice, mode));
        }
        QCOMPARE(links(), QStringList());
    }

    void linkThatIsThereInEitherDirectionIsADuplicate_data() { addModes(); }

    void linkThatIsThereInEitherDirectionIsADuplicate()
    {
        QFETCH(int, mode);
        QFETCH(bool, asks);
        QVERIFY(LinkData(session(), Water, Ice, 0));
        if (asks)
            world->dialogs.expect(question(u"水"_s, u"氷"_s));
        world->dialogs.expect(Duplicate);
        QVERIFY(!LinkData(session(), Water, Ice, static_cast<qint16>(mode)));
        if (asks)
            world->dialogs.expect(question(u"氷"_s, u"水"_s));
        world->dialogs.expect(Duplicate);
        QVERIFY(!LinkData(session(), Ice, Water, static_cast<qint16>(mode)));
        QCOMPARE(links(), QStringList(u"M-991231-001|M-991231-002"_s));
    }

    void datumCanBeLinkedToItselfOnce()
    {
        world->dialogs.expect(question(u"水"_s, u"水"_s));
        world->dialogs.expect(notice(u"水"_s, u"水"_s));
        QVERIFY(LinkData(session(), Water, Water, 3));
        world->dialogs.expect(Duplicate);
        QVERIFY(!LinkData(session(), Water, Water, 0));
        QCOMPARE(links(), QStringList(u"M-991231-001|M-991231-001"_s));
    }

    void everyPairOfKindsCanBeLinked()
    {
        const QStringList data = {Water, Book, File};
        int pairs = 0;
        for (int i = 0; i < data.size(); ++i) {
            for (int j = i; j < data.size(); ++j, ++pairs)
                QVERIFY(LinkData(session(), data[i], data[j], 0));
        }
        QCOMPARE(links().size(), pairs);
    }

    void missingDatumIsNotLinked_data()
    {
        QTest::addColumn<QString>("missing");
        QTest::newRow("identifier that is free") << u"R-991231-009"_s;
        QTest::newRow("no identifier") << u"十二文字の長さの文字列だ"_s;
        QTest::newRow("beyond the day") << u"M-991231-1000"_s;
        QTest::newRow("empty") << QString();
    }

    void missingDatumIsNotLinked()
    {
        QFETCH(QString, missing);
        world->dialogs.expect(question(u"水"_s, u"不明"_s));
        world->dialogs.expect(failureBox(u"LinkData"_s, 3021));
        QVERIFY(!LinkData(session(), Water, missing, 3));
        world->dialogs.expect(question(u"不明"_s, u"水"_s));
        world->dialogs.expect(failureBox(u"LinkData"_s, 3021));
        QVERIFY(!LinkData(session(), missing, Water, 3));
        QCOMPARE(links(), QStringList());
    }

    void linkMadeElsewhereDuringTheQuestionIsADuplicate()
    {
        world->dialogs.expect(question(u"水"_s, u"氷"_s));
        world->dialogs.meanwhile([&] {
            Database::open(path)->connection().execute(
                u"INSERT INTO Link VALUES ('M-991231-002', 'M-991231-001')"_s);
        });
        world->dialogs.expect(Duplicate);
        QVERIFY(!LinkData(session(), Water, Ice, 1));
        QCOMPARE(links().size(), 1);
    }

    void identifierWithAQuoteCannotBeLinked()
    {
        for (const qint16 mode : {0, 1}) {
            world->dialogs.expect(failureBox(u"GetDataName"_s, 3075));
            QVERIFY(!LinkData(session(), Water, u"M'"_s, mode));
            QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        }
        QCOMPARE(links(), QStringList());
    }

    void dataThatCannotBeReadAreNotAskedAbout()
    {
        const ForeignLock lock(database(), ForeignLock::Kind::Exclusive);
        world->dialogs.expect(failureBox(u"GetDataName"_s, 3260)); // once: the other one would fail like it
        QVERIFY(!LinkData(session(), Water, Book, 3));
    }

    void linkingWithoutDatabaseIsReported()
    {
        session().RsLink.reset();
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        world->dialogs.expect(failureBox(u"LinkData"_s, 91));
        QVERIFY(!LinkData(session(), Water, Ice, 0));
        QCOMPARE(world->eventLog.lines.size(), 2);
    }

    void linkingInALockedFileIsReported()
    {
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            world->dialogs.expect(failureBox(u"LinkData"_s, 3260));
            QVERIFY(!LinkData(session(), Water, Ice, 2));
        }
        QVERIFY(LinkData(session(), Water, Ice, 0));
        QCOMPARE(links().size(), 1);
    }

    void linkIsDeletedFromEitherEnd_data()
    {
        QTest::addColumn<bool>("forth");
        QTest::addColumn<bool>("back");
        QTest::newRow("as stored") << true << false;
        QTest::newRow("the other way round") << false << true;
        QTest::newRow("both directions") << true << true;
        QTest::newRow("no link at all") << false << false;
    }

    void linkIsDeletedFromEitherEnd()
    {
        QFETCH(bool, forth);
        QFETCH(bool, back);
        addLink(Water, Ice);
        if (forth)
            addLink(Water, Book);
        if (back)
            addLink(Book, Water);
        addLink(Book, File);
        world->dialogs.expect(Unlinked); // every time, without a question
        world->dialogs.meanwhile([&] { QCOMPARE(links().size(), 2); });
        QVERIFY(DeleteLink(session(), Water, Book));
        QCOMPARE(links(), QStringList({u"M-991231-001|M-991231-002"_s, u"R-991231-001|F-991231-001"_s}));
    }

    void linkToItselfIsDeleted()
    {
        addLink(Water, Water);
        addLink(Water, Ice);
        world->dialogs.expect({.text = u"<水> と <水> のリンクを削除しました。"_s, .title = u"Quillon"_s});
        QVERIFY(DeleteLink(session(), Water, Water));
        QCOMPARE(links(), QStringList(u"M-991231-001|M-991231-002"_s));
    }

    void linkToAMissingDatumIsDeleted()
    {
        addLink(u"R-991231-009"_s, Water);
        world->dialogs.expect({.text = u"<水> と <不明> のリンクを削除しました。"_s, .title = u"Quillon"_s});
        QVERIFY(DeleteLink(session(), Water, u"R-991231-009"_s));
        QCOMPARE(links(), QStringList());
    }

    void deletingALinkOfAnIdentifierWithAQuoteIsReported()
    {
        addLink(Water, u"M'"_s);
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
        world->dialogs.expect(failureBox(u"DeleteLink"_s, 91));
        QVERIFY(!DeleteLink(session(), Water, u"M'"_s));
        QCOMPARE(links().size(), 1);
    }

    void deletingALinkWithoutDatabaseIsReported()
    {
        session().RsLink.reset();
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        world->dialogs.expect(failureBox(u"DeleteLink"_s, 91));
        QVERIFY(!DeleteLink(session(), Water, Ice));
    }

    void refusedDirectionKeepsTheOtherOne()
    {
        addLink(Book, Water);
        addLink(Water, Book);
        refuseDeletion(database(), u"Link"_s, u"OLD.Object_ID = 'R-991231-001'"_s);
        world->dialogs.expect(failureBox(u"DeleteLink"_s, 5));
        QVERIFY(!DeleteLink(session(), Water, Book));
        QCOMPARE(links(), QStringList({u"R-991231-001|M-991231-001"_s, u"M-991231-001|R-991231-001"_s}));
    }

    void linkInALockedFileStays()
    {
        addLink(Water, Book);
        const ForeignLock lock(database(), ForeignLock::Kind::Writing);
        world->dialogs.expect(failureBox(u"DeleteLink"_s, 3260));
        QVERIFY(!DeleteLink(session(), Water, Book));
        // Where there is nothing to delete, nothing is in the way.
        world->dialogs.expect({.text = u"<水> と <氷> のリンクを削除しました。"_s, .title = u"Quillon"_s});
        QVERIFY(DeleteLink(session(), Water, Ice));
        QCOMPARE(links().size(), 1);
    }

    void linkOfDataThatAreOthersByNowIsKept_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("target");
        QTest::newRow("the one") << u"湯"_s << u"水の本"_s;
        QTest::newRow("the other") << u"水"_s << u"本"_s;
        QTest::newRow("gone when it was asked about") << u"不明"_s << u"水の本"_s;
    }

    void linkOfDataThatAreOthersByNowIsKept()
    {
        QFETCH(QString, source);
        QFETCH(QString, target);
        addLink(Water, Book);
        world->dialogs.expect(failureBox(u"DeleteLink"_s, errors::NoCurrentRecord));
        QVERIFY(!DeleteLink(session(), {.identifier = Water, .name = source},
                            {.identifier = Book, .name = target}));
        QCOMPARE(links().size(), 1);
    }

    void everyLinkOfADatumGoesWithoutAWord()
    {
        addLink(Water, Ice);
        addLink(Ice, Book);
        addLink(Book, Water);
        addLink(Water, Water);
        addLink(u"M-991231-0011"_s.left(11), Ice); // an identifier that only begins like the other
        const WriteCounter writes(database());
        DeleteRelationalLink(session(), Water);
        QCOMPARE(writes.count, 1);
        QCOMPARE(links(), QStringList({u"M-991231-002|R-991231-001"_s, u"M-991231-00|M-991231-002"_s}));
    }

    void datumWithoutLinksIsNoWrite()
    {
        addLink(Ice, Book);
        const WriteCounter writes(database());
        const ForeignLock lock(database(), ForeignLock::Kind::Writing);
        DeleteRelationalLink(session(), Water);
        QCOMPARE(writes.count, 0);
        QCOMPARE(links().size(), 1);
    }

    void rowDeletedElsewhereDoesNotStopTheOthers()
    {
        addLink(Water, Ice);
        addLink(Water, Book);
        addLink(Water, File);
        session().RsLink->findFirst(u"Object_ID = 'R-991231-001'"_s);
        Database::open(path)->connection().execute(u"DELETE FROM Link WHERE Object_ID LIKE 'R-%'"_s);
        DeleteRelationalLink(session(), Water);
        QCOMPARE(links(), QStringList());
    }

    void refusedLinkAmongManyIsReportedAndWhatWasDeletedStaysDeleted_data()
    {
        QTest::addColumn<Refusal>("refusal");
        QTest::addColumn<int>("left");
        QTest::newRow("of the statement") << Refusal::OfTheStatement << 2;
        QTest::newRow("of the transaction") << Refusal::OfTheTransaction << 3;
    }

    void refusedLinkAmongManyIsReportedAndWhatWasDeletedStaysDeleted()
    {
        QFETCH(Refusal, refusal);
        QFETCH(int, left);
        addLink(Water, Ice);
        addLink(Water, Book);
        addLink(Water, File);
        refuseDeletion(database(), u"Link"_s, u"OLD.Object_ID = 'R-991231-001'"_s, refusal);
        world->dialogs.expect(failureBox(u"DeleteRelationalLink"_s, 5));
        DeleteRelationalLink(session(), Water);
        QCOMPARE(links().size(), left);
        QVERIFY(!database().connection().inTransaction());
        QCOMPARE(world->eventLog.lines,
                 QStringList(u"1999/12/31, 23:45, LOCATION : DeleteRelationalLink, ErrorNumber : 5, "
                             u"DESCRIPTION : "_s +
                             standardDescription(5)));
    }

    void deletingLinksFailsUnderItsOwnName()
    {
        addLink(Water, Ice);
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
        world->dialogs.expect(failureBox(u"DeleteRelationalLink"_s, 91));
        DeleteRelationalLink(session(), u"M'"_s);
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            world->dialogs.expect(failureBox(u"DeleteRelationalLink"_s, 3260));
            DeleteRelationalLink(session(), Water);
        }
        QCOMPARE(links().size(), 1);
        session().RsLink.reset();
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        world->dialogs.expect(failureBox(u"DeleteRelationalLink"_s, 91));
        DeleteRelationalLink(session(), Water);
    }
};

QTEST_GUILESS_MAIN(TestLinks)
#include "test_links.moc"
