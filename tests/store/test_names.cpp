#include "store/lookup/category_names.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What data and categories are called.
class TestNames : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

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

    void nameComesFromTheTableOfTheKind()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        TestWorld::addRow(world->session.RsMain, {u"謎"_s, u"X-991231-001"_s, u"?"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"水の本"_s, u"R-991231-001"_s, u"…"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"水.txt"_s, u"F-991231-001"_s, u"水.txt"_s});

        QCOMPARE(GetDataName(world->session, u"M-991231-001"_s), u"水"_s);
        QCOMPARE(GetDataName(world->session, u"R-991231-001"_s), u"水の本"_s);
        QCOMPARE(GetDataName(world->session, u"F-991231-001"_s), u"水.txt"_s);
        QCOMPARE(GetDataName(world->session, u"X-991231-001"_s),
                 u"謎"_s); // another kind: among the definitions
    }

    void unknownIdentifierHasTheUnknownName()
    {
        QCOMPARE(GetDataName(world->session, u"M-991231-001"_s), u"不明"_s);
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        QCOMPARE(GetDataName(world->session, u"M-991231-002"_s), u"不明"_s);
        QCOMPARE(GetDataName(world->session, u"m-991231-001"_s), u"不明"_s);
        QCOMPARE(GetDataName(world->session, QString()), u"不明"_s);
    }

    void nameWithoutDatabaseIsReported()
    {
        world->session.RsMain.reset();
        world->dialogs.expect(failureBox(u"GetDataName"_s, 91));
        QCOMPARE(GetDataName(world->session, u"M-991231-001"_s), QString());
        QCOMPARE(world->eventLog.lines.size(), 1);
    }

    void categoryHasItsName()
    {
        QCOMPARE(GetCategoryName(world->session, u"A"_s), u"不明"_s);
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-A"_s, u"<水>"_s});
        QCOMPARE(GetCategoryName(world->session, u"A"_s), u"自然"_s);
        QCOMPARE(GetCategoryName(world->session, u"A-A"_s), u"<水>"_s);
        QCOMPARE(GetCategoryName(world->session, u"a"_s), u"不明"_s);
        QCOMPARE(GetCategoryName(world->session, u"B"_s), u"不明"_s);
    }

    void categoryNameWithoutDatabaseIsReported()
    {
        world->session.RsCategoryID.reset();
        world->dialogs.expect(failureBox(u"GetCategoryName"_s, 91));
        QCOMPARE(GetCategoryName(world->session, u"A"_s), QString());
    }
};

QTEST_GUILESS_MAIN(TestNames)
#include "test_names.moc"
