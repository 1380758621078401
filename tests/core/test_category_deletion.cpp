#include "app/base/ports/data_window.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "store/record_set.h"
#include "tests/support/errors_of.h"
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

const MessageBox Question{
    .text = u"<自然> を削除しますか。"_s, .title = u"Quillon"_s, .buttons = Buttons::OkCancel};
const MessageBox Notice{.text = u"カテゴリ：自然を削除しました。"_s, .title = u"Quillon"_s};
const MessageBox Inconsistency{
    .text = u"カテゴリ一覧フレームに不整合が確認されました。再度データベースを展開することをお勧めします｡ "_s,
    .title = u"Quillon"_s};

} // namespace

class TestCategoryDeletion : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;
    QString path;

    Session& session() { return world->session; }
    Database& database() { return *world->session.OpenDb; }
    QStringList categories() { return TestWorld::rowsOf(session().RsCategoryID); }
    QStringList memberships() { return TestWorld::rowsOf(session().RsCategory); }
    CategoryRow listed(const QString& identifier) { return listedCategory(session(), u"名"_s, identifier); }
    /// A datum as a list shows one whose row is missing.
    static ListedDatum seen(const QString& identifier)
    {
        return {.identifier = identifier, .name = u"不明"_s};
    }
    static MessageBox notFound(int count)
    {
        return {.text = u"指定されたデータが見つかりませんでした。"_s +
                        (count > 1 ? u"\r\n(%1 件)"_s.arg(count) : QString()),
                .title = u"Quillon データ調査分析部"_s};
    }
    void executeElsewhere(const QString& sql) { Database::open(path)->connection().execute(sql); }

private Q_SLOTS:
    /// Two categories and one below the first; water is filed in all, ice in the first.
    void init()
    {
        world = std::make_unique<TestWorld>();
        path = world->createDatabase();
        world->openDatabase(path);
        TestWorld::addRow(session().RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(session().RsCategoryID, {u"B"_s, u"人工"_s});
        TestWorld::addRow(session().RsCategoryID, {u"A-A"_s, u"天気"_s});
        for (const auto& [category, datum] : {std::pair(u"B"_s, Water), std::pair(u"A"_s, Water),
                                              std::pair(u"A-A"_s, Water), std::pair(u"A"_s, Ice)})
            TestWorld::addRow(session().RsCategory, {category, datum});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void oneMembershipIsTakenAway()
    {
        DeleteCategoryEntry(session(), u"A"_s, Water);
        QCOMPARE(memberships(),
                 QStringList({u"B|M-991231-001"_s, u"A-A|M-991231-001"_s, u"A|M-991231-002"_s}));
    }

    void missingMembershipIsAFailureForTheCaller()
    {
        QCOMPARE(errorOf([&] { DeleteCategoryEntry(session(), u"B"_s, Ice); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { DeleteCategoryEntry(session(), u"a"_s, Water); }), errors::NoCurrentRecord);
        QCOMPARE(memberships().size(), 4);
        QCOMPARE(world->eventLog.lines, QStringList());
    }

    void otherFailuresToTakeAMembershipAwayGoToTheCallerToo()
    {
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
        QCOMPARE(errorOf([&] { DeleteCategoryEntry(session(), u"A'"_s, Water); }), errors::ObjectNotSet);
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            QCOMPARE(errorOf([&] { DeleteCategoryEntry(session(), u"A"_s, Water); }), errors::Locked);
        }
        QCOMPARE(memberships().size(), 4);
        session().RsCategory.reset();
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        QCOMPARE(errorOf([&] { DeleteCategoryEntry(session(), u"A"_s, Water); }), errors::ObjectNotSet);
    }

    void everyMembershipOfADatumGoesAsOneDurableWrite()
    {
        const WriteCounter writes(database());
        DeleteRelationalCategory(session(), Water);
        QCOMPARE(writes.count, 1);
        QCOMPARE(memberships(), QStringList(u"A|M-991231-002"_s));
        DeleteRelationalCategory(session(), Water);
        QCOMPARE(writes.count, 1);
        QCOMPARE(categories().size(), 3);
    }

    void takingEveryMembershipAwayFailsUnderItsOwnName()
    {
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
        world->dialogs.expect(failureBox(u"DeleteRelationalCategory"_s, 91));
        DeleteRelationalCategory(session(), u"M'"_s);
        {
            const ForeignLock lock(database(), ForeignLock::Kind::Writing);
            world->dialogs.expect(failureBox(u"DeleteRelationalCategory"_s, 3260));
            DeleteRelationalCategory(session(), Water);
        }
        QCOMPARE(memberships().size(), 4);
        refuseDeletion(database(), u"Category"_s, u"OLD.Category_ID = 'A-A'"_s);
        world->dialogs.expect(failureBox(u"DeleteRelationalCategory"_s, 5));
        DeleteRelationalCategory(session(), Water);
        QCOMPARE(memberships(), QStringList({u"A-A|M-991231-001"_s, u"A|M-991231-002"_s}));
        session().RsCategory.reset();
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        world->dialogs.expect(failureBox(u"DeleteRelationalCategory"_s, 91));
        DeleteRelationalCategory(session(), Water);
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
    }

    void boxesFollowTheMode()
    {
        QFETCH(int, mode);
        QFETCH(bool, asks);
        QFETCH(bool, tells);
        if (asks)
            world->dialogs.expect(Question);
        if (tells) {
            world->dialogs.expect(Notice);
            world->dialogs.meanwhile([&] {
                QCOMPARE(categories().size(), 2);
                QVERIFY(othersMayWrite(path));
            });
        }
        const WriteCounter writes(database());
        QVERIFY(DeleteCategory(session(), u"A"_s, static_cast<qint16>(mode)));
        QCOMPARE(writes.count, 1);
        // The subcategory stays, and so do the memberships in it.
        QCOMPARE(categories(), QStringList({u"B|人工"_s, u"A-A|天気"_s}));
        QCOMPARE(memberships(), QStringList({u"B|M-991231-001"_s, u"A-A|M-991231-001"_s}));
    }

    void cancelKeepsTheCategory()
    {
        const qint64 before = database().connection().totalChanges();
        for (const qint16 mode : {qint16{1}, qint16{3}}) {
            world->dialogs.expect(Question, Answer::Cancel);
            QVERIFY(!DeleteCategory(session(), u"A"_s, mode));
        }
        QCOMPARE(database().connection().totalChanges(), before);
    }

    void dataFallBackToBeingUncategorised()
    {
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u""_s});
        for (const QString& category : {u"A-A"_s, u"A"_s, u"B"_s})
            QVERIFY(DeleteCategory(session(), category, 0));
        QCOMPARE(memberships(), QStringList());
        QCOMPARE(session().RsMain->recordCount(), 1);
    }

    void emptyCategoryIsDeleted()
    {
        executeElsewhere(u"DELETE FROM Category"_s);
        QVERIFY(DeleteCategory(session(), u"A"_s, 0));
        QCOMPARE(categories().size(), 2);
    }

    void categoryWhoseRowIsMissingLosesItsMembers_data()
    {
        QTest::addColumn<int>("mode");
        for (const int mode : {0, 1, 2, 3})
            QTest::addRow("mode %d", mode) << mode;
    }

    void categoryWhoseRowIsMissingLosesItsMembers()
    {
        QFETCH(int, mode);
        executeElsewhere(u"DELETE FROM Category_ID WHERE Category_ID = 'A'"_s);
        if (mode == 1 || mode == 3)
            world->dialogs.expect(
                {.text = u"<不明> を削除しますか。"_s, .title = u"Quillon"_s, .buttons = Buttons::OkCancel});
        world->dialogs.expect(Inconsistency);
        QVERIFY(DeleteCategory(session(), u"A"_s, static_cast<qint16>(mode)));
        QCOMPARE(memberships(), QStringList({u"B|M-991231-001"_s, u"A-A|M-991231-001"_s}));
        QCOMPARE(categories().size(), 2);
    }

    void identifierMustMatchExactly()
    {
        world->dialogs.expect(Inconsistency);
        QVERIFY(DeleteCategory(session(), u"a"_s, 0));
        QCOMPARE(categories().size(), 3);
        QCOMPARE(memberships().size(), 4);
    }

    void refusedMembershipKeepsTheCategory()
    {
        refuseDeletion(database(), u"Category"_s, u"OLD.Object_ID = 'M-991231-002'"_s);
        world->dialogs.expect(failureBox(u"DeleteCategory"_s, 5));
        QVERIFY(!DeleteCategory(session(), u"A"_s, 2));
        QCOMPARE(memberships().size(), 4);
        QCOMPARE(categories().size(), 3);
    }

    void refusedCategoryKeepsItsMembers_data()
    {
        QTest::addColumn<Refusal>("refusal");
        QTest::newRow("of the statement") << Refusal::OfTheStatement;
        QTest::newRow("of the transaction") << Refusal::OfTheTransaction;
    }

    void refusedCategoryKeepsItsMembers()
    {
        QFETCH(Refusal, refusal);
        refuseDeletion(database(), u"Category_ID"_s, u"1"_s, refusal);
        world->dialogs.expect(failureBox(u"DeleteCategory"_s, 5));
        QVERIFY(!DeleteCategory(session(), u"A"_s, 2));
        QCOMPARE(memberships().size(), 4);
        QCOMPARE(categories().size(), 3);
    }

    void lockedFileKeepsTheCategory_data()
    {
        QTest::addColumn<ForeignLock::Kind>("kind");
        QTest::newRow("written elsewhere") << ForeignLock::Kind::Writing;
        QTest::newRow("read elsewhere") << ForeignLock::Kind::Reading;
    }

    void lockedFileKeepsTheCategory()
    {
        QFETCH(ForeignLock::Kind, kind);
        {
            const ForeignLock lock(database(), kind);
            world->dialogs.expect(failureBox(u"DeleteCategory"_s, 3260));
            QVERIFY(!DeleteCategory(session(), u"A"_s, 2));
        }
        QCOMPARE(memberships().size(), 4);
        QCOMPARE(categories().size(), 3);
    }

    void identifierWithAQuoteIsReported()
    {
        world->dialogs.expect(failureBox(u"GetCategoryName"_s, 3075));
        QVERIFY(!DeleteCategory(session(), u"A'"_s, 1));
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
        world->dialogs.expect(failureBox(u"DeleteCategory"_s, 91));
        QVERIFY(!DeleteCategory(session(), u"A'"_s, 0));
    }

    void categoryThatCannotBeReadIsNotAskedAbout()
    {
        const ForeignLock lock(database(), ForeignLock::Kind::Exclusive);
        world->dialogs.expect(failureBox(u"GetCategoryName"_s, 3260));
        QVERIFY(!DeleteCategory(session(), u"A"_s, 3));
    }

    void deletingWithoutDatabaseIsReported()
    {
        session().RsCategoryID.reset();
        world->dialogs.expect(failureBox(u"DeleteCategory"_s, 91));
        QVERIFY(!DeleteCategory(session(), u"A"_s, 0));
        QCOMPARE(memberships().size(), 4);
        session().RsCategory.reset();
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        world->dialogs.expect(failureBox(u"DeleteCategory"_s, 91));
        QVERIFY(!DeleteCategory(session(), u"A"_s, 0));
    }

    void dataAreTakenOutOfTheFirstOfACategoryAndItsSubcategories()
    {
        // The membership in another category stands before the one that counts.
        const WriteCounter writes(database());
        TakeOutOfCategory(session(), listed(u"A"_s), {seen(Water), seen(Ice)});
        QCOMPARE(writes.count, 1);
        QCOMPARE(memberships(), QStringList({u"B|M-991231-001"_s, u"A-A|M-991231-001"_s}));
    }

    void datumNamedTwiceLeavesTwoOfThem()
    {
        TakeOutOfCategory(session(), listed(u"A"_s), {seen(Water), seen(Water)});
        QCOMPARE(memberships(), QStringList({u"B|M-991231-001"_s, u"A|M-991231-002"_s}));
    }

    void dataThatAreNotFiledThereArePassedOver()
    {
        world->dialogs.expect(notFound(2)); // Water is filed there once only
        TakeOutOfCategory(session(), listed(u"B"_s), {seen(Ice), seen(Water), seen(Water)});
        QCOMPARE(memberships(),
                 QStringList({u"A|M-991231-001"_s, u"A-A|M-991231-001"_s, u"A|M-991231-002"_s}));
        TakeOutOfCategory(session(), listed(u"B"_s), {});
        world->dialogs.expect(notFound(1));
        TakeOutOfCategory(session(), listed(u"Z"_s), {seen(Ice)});
        QCOMPARE(memberships().size(), 3);
    }

    void dataThatBearAnotherNameByNowArePassedOver()
    {
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        world->dialogs.expect(notFound(1));
        TakeOutOfCategory(session(), listed(u"A"_s), {{.identifier = Water, .name = u"湯"_s}, seen(Ice)});
        QCOMPARE(memberships(),
                 QStringList({u"B|M-991231-001"_s, u"A|M-991231-001"_s, u"A-A|M-991231-001"_s}));
    }

    void failuresToTakeDataOutGoToTheCaller()
    {
        QCOMPARE(errorOf([&] { TakeOutOfCategory(session(), listed(u"A'"_s), {seen(Water)}); }),
                 errors::CriteriaSyntax);
        const ForeignLock lock(database(), ForeignLock::Kind::Reading);
        QCOMPARE(errorOf([&] { TakeOutOfCategory(session(), listed(u"A"_s), {seen(Water)}); }),
                 errors::Locked);
        QCOMPARE(memberships().size(), 4);
    }

    void nothingIsTakenOutOfAnotherCategoryWithTheIdentifierOfTheListedOne()
    {
        const CategoryRow shown = listed(u"A"_s);
        executeElsewhere(u"UPDATE Category_ID SET Name = '別' WHERE Category_ID = 'A'"_s);
        TakeOutOfCategory(session(), shown, {seen(Ice)}); // renamed only
        QCOMPARE(memberships().size(), 3);
        executeElsewhere(u"DELETE FROM Category_ID WHERE Category_ID = 'A'"_s);
        QCOMPARE(errorOf([&] { TakeOutOfCategory(session(), shown, {seen(Water)}); }),
                 errors::NoCurrentRecord);
        TestWorld::addRow(session().RsCategoryID, {u"A"_s, u"次"_s});
        QCOMPARE(errorOf([&] { TakeOutOfCategory(session(), shown, {seen(Water)}); }),
                 errors::NoCurrentRecord);
        QCOMPARE(memberships().size(), 3);
    }

    void categoryWithoutARowGivesItsDataBack()
    {
        executeElsewhere(u"DELETE FROM Category_ID WHERE Category_ID = 'A'"_s);
        TakeOutOfCategory(session(), listed(u"A"_s), {seen(Ice)});
        QCOMPARE(memberships().size(), 3);
    }

    void categoryThatIsAnotherByTheAnswerIsKept_data()
    {
        QTest::addColumn<QString>("meanwhile");
        QTest::newRow("renamed") << u"UPDATE Category_ID SET Name = '別' WHERE Category_ID = 'A'"_s;
        QTest::newRow("deleted and registered again") << u"DELETE FROM Category_ID WHERE Category_ID = 'A'; "
                                                         u"INSERT INTO Category_ID VALUES ('A', '別')"_s;
        QTest::newRow("registered again under the same name")
            << u"DELETE FROM Category_ID WHERE Category_ID = 'A'; "
               u"INSERT INTO Category_ID VALUES ('A', '自然')"_s;
    }

    void categoryThatIsAnotherByTheAnswerIsKept()
    {
        QFETCH(QString, meanwhile);
        world->dialogs.expect(Question);
        world->dialogs.meanwhile([&] {
            for (const QString& statement : meanwhile.split(u"; "_s))
                executeElsewhere(statement);
        });
        world->dialogs.expect(failureBox(u"DeleteCategory"_s, errors::NoCurrentRecord));
        QVERIFY(!DeleteCategory(session(), u"A"_s, 1));
        QCOMPARE(categories().size(), 3);
        QCOMPARE(memberships().size(), 4);
    }

    void categoryRegisteredSinceItWasAskedAboutAsUnknownIsKept()
    {
        world->dialogs.expect(
            {.text = u"<不明> を削除しますか。"_s, .title = u"Quillon"_s, .buttons = Buttons::OkCancel});
        world->dialogs.meanwhile([&] { executeElsewhere(u"INSERT INTO Category_ID VALUES ('C', '新')"_s); });
        world->dialogs.expect(failureBox(u"DeleteCategory"_s, errors::NoCurrentRecord));
        QVERIFY(!DeleteCategory(session(), u"C"_s, 1));
        QCOMPARE(categories().size(), 4);
    }
};

QTEST_GUILESS_MAIN(TestCategoryDeletion)
#include "test_category_deletion.moc"
