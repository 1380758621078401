#include "core/categories.h"
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

const QString Datum = u"M-991231-001"_s;

} // namespace

class TestCategories : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    void addMemberships(const QStringList& categories)
    {
        for (const QString& category : categories)
            TestWorld::addRow(world->session.RsCategory, {category, Datum});
    }
    QStringList memberships() { return TestWorld::rowsOf(world->session.RsCategory); }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void categoryListShowsTheDatumsCategoriesInTableOrder()
    {
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"B"_s, u"人工"_s});
        addMemberships({u"B"_s, u"A"_s, u"Z"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, u"M-991231-002"_s});
        FakeDataWindow window(u"frmMainData"_s);
        window.categories = {{u"古い"_s, u"Q"_s}};

        AddCategory(world->session, window, Datum);

        QCOMPARE(window.categories.size(), 3U);
        QCOMPARE(window.categories[0].name, u"人工"_s);
        QCOMPARE(window.categories[0].identifier, u"B"_s);
        QCOMPARE(window.categories[1].name, u"自然"_s);
        QCOMPARE(window.categories[2].name, u"不明"_s);
        QCOMPARE(window.categories[2].identifier, u"Z"_s);
    }

    void datumWithoutCategoriesEmptiesTheList()
    {
        FakeDataWindow window(u"frmMainData"_s);
        window.categories = {{u"古い"_s, u"Q"_s}};
        AddCategory(world->session, window, Datum);
        QVERIFY(window.categories.empty());
    }

    void categoryThatNoSearchCanNameIsReportedOnce()
    {
        addMemberships({u"A'"_s});
        FakeDataWindow window(u"frmMainData"_s);
        world->dialogs.expect(failureBox(u"GetCategoryName"_s, 3075));
        AddCategory(world->session, window, Datum);
        QCOMPARE(window.categories.size(), 1U);
        QCOMPARE(window.categories[0].name, QString());
    }

    void listWithoutDatabaseIsReportedTwice()
    {
        world->session.RsCategory.reset();
        FakeDataWindow window(u"frmMainData"_s);
        window.categories = {{u"古い"_s, u"Q"_s}};
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        world->dialogs.expect(failureBox(u"AddCategory"_s, 91));
        AddCategory(world->session, window, Datum);
        QVERIFY(window.categories.empty());
    }

    void filingTakesTheDatumOutOfTheAncestors()
    {
        addMemberships({u"A"_s, u"B"_s, u"A-B"_s, u"A-B-C-D"_s, u"A-C"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, u"M-991231-002"_s});
        ClassifyCategory(world->session, u"A-B-C"_s, Datum);
        QCOMPARE(memberships(), QStringList({u"B|"_s + Datum, u"A-B-C-D|"_s + Datum, u"A-C|"_s + Datum,
                                             u"A|M-991231-002"_s, u"A-B-C|"_s + Datum}));
    }

    void datumIsFiledBeforeTheAncestorsAreCleanedTheOutermostFirst()
    {
        addMemberships({u"A-B"_s, u"A"_s}); // in the other order
        const JournaledWrites writes(*world->session.OpenDb, world->calls);
        ClassifyCategory(world->session, u"A-B-C"_s, Datum);
        QVERIFY(compareLines(world->calls.lines(),
                             {u"insert Category A-B-C|"_s + Datum, u"delete Category A|"_s + Datum,
                              u"delete Category A-B|"_s + Datum, u"commit"_s}));
    }

    void filingThatCannotLeaveAnAncestorIsNotDone()
    {
        addMemberships({u"A"_s, u"A-B"_s});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A-B'"_s);
        world->dialogs.expect(failureBox(u"DeleteParentCategory"_s, 5));
        ClassifyCategory(world->session, u"A-B-C"_s, Datum);
        QCOMPARE(memberships(), QStringList({u"A|"_s + Datum, u"A-B|"_s + Datum}));
    }

    void outermostAncestorIsCleanedBeforeALaterOneFails()
    {
        addMemberships({u"A-B"_s, u"A"_s});
        refuseDeletion(*world->session.OpenDb, u"Category"_s, u"OLD.Category_ID = 'A-B'"_s);
        world->dialogs.expect(failureBox(u"DeleteParentCategory"_s, 5));
        DeleteParentCategory(world->session, u"A-B-C"_s, Datum);
        QCOMPARE(memberships(), QStringList({u"A-B|"_s + Datum}));
    }

    void filingInAnAncestorKeepsTheDescendant()
    {
        addMemberships({u"A"_s});
        ClassifyCategory(world->session, u"A-B"_s, Datum);
        QCOMPARE(memberships(), QStringList({u"A-B|"_s + Datum}));
        ClassifyCategory(world->session, u"A"_s, Datum);
        QCOMPARE(memberships(), QStringList({u"A-B|"_s + Datum, u"A|"_s + Datum}));
    }

    void filingTwiceMakesOneRowAndStillCleansTheAncestors()
    {
        ClassifyCategory(world->session, u"A-B"_s, Datum);
        addMemberships({u"A"_s});
        ClassifyCategory(world->session, u"A-B"_s, Datum);
        QCOMPARE(memberships(), QStringList({u"A-B|"_s + Datum}));
    }

    void hyphenAsAStepIsNoFurtherAncestor()
    {
        addMemberships({u"A"_s, u"A-"_s});
        DeleteParentCategory(world->session, u"A--"_s, Datum);
        QCOMPARE(memberships(), QStringList());
    }

    void cleaningLeavesTheCategoryItself()
    {
        addMemberships({u"A"_s, u"A-B"_s});
        DeleteParentCategory(world->session, u"A-B"_s, Datum);
        QCOMPARE(memberships(), QStringList({u"A-B|"_s + Datum}));
        DeleteParentCategory(world->session, u"A"_s, Datum);
        QCOMPARE(memberships(), QStringList({u"A-B|"_s + Datum}));
    }

    void filingThatFailsIsReportedAndCleansNothing()
    {
        addMemberships({u"A"_s});
        const QString tooWide = u"A-"_s + QString(50, u'B');
        world->dialogs.expect(failureBox(u"ClassifyCategory"_s, 3163));
        ClassifyCategory(world->session, tooWide, Datum);
        QCOMPARE(memberships(), QStringList({u"A|"_s + Datum}));
    }

    void cleaningWithoutDatabaseIsReported()
    {
        world->session.RsCategory.reset();
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        world->dialogs.expect(failureBox(u"DeleteParentCategory"_s, 91));
        DeleteParentCategory(world->session, u"A-B"_s, Datum);
        DeleteParentCategory(world->session, u"A"_s, Datum); // no ancestor, nothing to look for
    }
};

QTEST_GUILESS_MAIN(TestCategories)
#include "test_categories.moc"
