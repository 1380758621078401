// A box waits for the person: none may come while a pass keeps other programs from writing the file. The dialogs of
// the test world complain about one that does.
#include "core/categories.h"
#include "core/data_selection.h"
#include "core/links.h"
#include "store/record_set.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestBoxesAfterPasses : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;

    /// A failure of looking up what no criteria text can hold; others may write while it is told.
    void expectTold(const QString& location)
    {
        world->dialogs.expect(failureBox(location, errors::CriteriaSyntax));
        world->dialogs.meanwhile([this] { QVERIFY(othersMayWrite(world->session.OpenDb->path())); });
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u""_s});
        TestWorld::addRow(world->session.RsLink, {u"M-991231-001"_s, u"M-99'1"_s});
        TestWorld::addRow(world->session.RsLink, {u"M-991231-001"_s, u"M-991231-002"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A'"_s, u"M-991231-001"_s});
        TestWorld::addRow(world->session.RsCategory, {u"B"_s, u"M-991231-001"_s});
    }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void linksOfADatum()
    {
        FakeDataWindow window(u"frmMainData"_s);
        expectTold(u"GetDataName"_s);
        SetLinkList(world->session, window, u"M-991231-001"_s);
        QCOMPARE(window.links.size(), 2U);
        QCOMPARE(window.links[0].identifier, u"M-99'1"_s);
    }

    void allLinks()
    {
        expectTold(u"GetDataName"_s);
        SetAllLinkList(world->session);
        QCOMPARE(world->windows.links.rows.size(), 2);
    }

    void categoriesOfADatum()
    {
        FakeDataWindow window(u"frmMainData"_s);
        expectTold(u"GetCategoryName"_s);
        AddCategory(world->session, window, u"M-991231-001"_s);
        QCOMPARE(window.categories.size(), 2U);
    }

    void dataToChooseFrom()
    {
        TestWorld::addRow(world->session.RsMain, {u"火"_s, u"M-99'1"_s, u""_s});
        expectTold(u"GetDataName"_s);
        CreateDataList(world->session, world->session.RsMain, SelectionUse::Show, ListFill::Replace);
        QCOMPARE(world->windows.selection.rows.size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestBoxesAfterPasses)
#include "test_boxes_after_passes.moc"
