#include "core/categories.h"
#include "core/datum_place.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/journaled_writes.h"
#include "tests/support/test_world.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Water = u"M-991231-001"_s;

} // namespace

class TestCategoryChoice : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    Session& session() { return world->session; }
    FakeCategoryChooser& chooser() { return world->windows.chooser; }
    QStringList memberships() { return TestWorld::rowsOf(session().RsCategory); }

    /// The nine fixed nodes and `count` categories A, A-A, A-A-A … of which each is the child of the one before.
    void fillTree(int count)
    {
        auto& nodes = world->mainWindow.nodes;
        for (int i = 1; i <= 8; ++i)
            nodes.push_back({u"FIXED%1"_s.arg(i), u"固定%1"_s.arg(i), QString()});
        nodes.push_back({u"CATEGORY"_s, u"カテゴリ"_s, QString()});
        QString parent = u"CATEGORY"_s;
        for (int i = 1; i <= count; ++i) {
            const QString key = i == 1 ? u"A"_s : parent + u"-A"_s;
            nodes.push_back({key, u"分類%1"_s.arg(i), parent});
            TestWorld::addRow(session().RsCategoryID, {key, u"分類%1"_s.arg(i)});
            parent = key;
        }
    }
    void choose(const QString& identifier, const QString& name)
    {
        session().CategoryChosen = true;
        session().ChosenCategoryID = identifier;
        session().ChosenCategoryName = name;
    }
    /// Deletes the category of this position, as another program does.
    void deleteCategory(const QString& identifier)
    {
        QVERIFY(session().RsCategoryID->goTo(category_field::Category_ID, identifier));
        session().RsCategoryID->deleteRow();
    }

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

    void chooserMirrorsTheCategoriesOfTheMainTree()
    {
        fillTree(10);
        SelectCategory(session(), Water);
        QCOMPARE(chooser().nodes.size(), 11U);
        QCOMPARE(chooser().nodes[0].parentKey, QString());
        QCOMPARE(chooser().nodes[0].key, u"CATEGORY"_s);
        QCOMPARE(chooser().nodes[0].text, u"カテゴリ"_s);
        QCOMPARE(chooser().nodes[1].parentKey, u"CATEGORY"_s);
        QCOMPARE(chooser().nodes[1].key, u"A"_s);
        QCOMPARE(chooser().nodes[1].text, u"分類1"_s);
        QCOMPARE(chooser().nodes[2].parentKey, u"A"_s);
        QCOMPARE(chooser().nodes[2].key, u"A-A"_s);
        QCOMPARE(chooser().nodes[10].text, u"分類10"_s);
    }

    void datumIsFiledInTheChosenCategory()
    {
        fillTree(8);
        TestWorld::addRow(session().RsCategory, {u"A"_s, Water});
        chooser().whileModal = [&] { choose(u"A-A"_s, u"分類2"_s); };
        SelectCategory(session(), Water);
        QCOMPARE(memberships(), QStringList(u"A-A|M-991231-001"_s)); // and no longer in the ancestor
    }

    void chooserIsFilledAndOpenedBeforeItIsShown()
    {
        fillTree(8);
        const JournaledWrites writes(*session().OpenDb, world->calls);
        chooser().whileModal = [&] { choose(u"A"_s, u"分類1"_s); };
        SelectCategory(session(), Water);
        QVERIFY(compareLines(world->calls.lines(),
                             {u"frmCategory.setNodes CATEGORY, A, A-A, A-A-A, A-A-A-A, A-A-A-A-A, "
                              u"A-A-A-A-A-A, A-A-A-A-A-A-A, A-A-A-A-A-A-A-A"_s,
                              u"frmCategory.expandNode 1"_s, u"frmCategory.expandNode 9"_s,
                              u"frmCategory.showModal"_s, u"insert Category A|M-991231-001"_s, u"commit"_s}));
    }

    void categoryDeletedDuringTheChoiceGetsNothing()
    {
        fillTree(8);
        chooser().whileModal = [&] {
            choose(u"A-A"_s, u"分類2"_s);
            deleteCategory(u"A-A"_s);
        };
        world->dialogs.expect(failureBox(u"ClassifyCategory"_s, 3021));
        SelectCategory(session(), Water);
        QCOMPARE(memberships(), QStringList());
    }

    void categoryWithTheIdentifierOfTheChosenOneGetsNothing()
    {
        fillTree(8);
        chooser().whileModal = [&] {
            choose(u"A-A"_s, u"分類2"_s);
            deleteCategory(u"A-A"_s);
            TestWorld::addRow(session().RsCategoryID, {u"A-A"_s, u"別"_s});
        };
        world->dialogs.expect(failureBox(u"ClassifyCategory"_s, 3021));
        SelectCategory(session(), Water);
        QCOMPARE(memberships(), QStringList());
    }

    void datumThatWasReplacedDuringTheChoiceIsNotFiled()
    {
        fillTree(8);
        RecordSet& rows = *session().RsMain;
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        QVERIFY(rows.goTo(data_field::Object_ID, Water));
        const DatumPlace shown{.kind = &data_kinds::definition(),
                               .databaseFile = openDatabaseFile(session()),
                               .identifier = Water,
                               .row = rows.rowNumber()};
        chooser().whileModal = [&] {
            choose(u"A-A"_s, u"分類2"_s);
            rows.deleteRow();
            TestWorld::addRow(session().RsMain, {u"火"_s, Water, u"熱"_s});
        };
        QCOMPARE(errorOf([&] { SelectCategory(session(), shown); }), errors::NoCurrentRecord);
        QCOMPARE(memberships(), QStringList());
        chooser().whileModal = {};
        const DatumPlace fire{.kind = shown.kind,
                              .databaseFile = shown.databaseFile,
                              .identifier = Water,
                              .row = shown.row + 1};
        SelectCategory(session(), fire);
        QCOMPARE(memberships(), QStringList(u"A-A|M-991231-001"_s));
    }

    void cancelFilesNothing()
    {
        fillTree(8);
        choose(u"A-A"_s, u"分類2"_s);
        chooser().whileModal = [&] { session().CategoryChosen = false; };
        SelectCategory(session(), Water);
        QCOMPARE(memberships(), QStringList());
    }

    void closingByOtherMeansChoosesAsBefore()
    {
        fillTree(8);
        choose(u"A-A"_s, u"分類2"_s);
        SelectCategory(session(), Water);
        SelectCategory(session(), Water);
        QCOMPARE(memberships(), QStringList(u"A-A|M-991231-001"_s));
    }

    void eightCategoriesAreNeeded_data()
    {
        QTest::addColumn<int>("categories");
        QTest::addColumn<bool>("shown");
        QTest::newRow("none") << 0 << false;
        QTest::newRow("seven") << 7 << false;
        QTest::newRow("eight") << 8 << true;
    }

    void eightCategoriesAreNeeded()
    {
        QFETCH(int, categories);
        QFETCH(bool, shown);
        fillTree(categories);
        choose(u"A"_s, u"分類1"_s); // left over from an earlier choice
        qint32 number = 0;
        QString description;
        try {
            SelectCategory(session(), Water);
        } catch (const Error& error) {
            number = error.number;
            description = error.description;
        }
        QCOMPARE(number, shown ? 0 : 35600);
        QCOMPARE(world->calls.lines().last(), shown ? u"frmCategory.showModal"_s : u"frmCategory.unload"_s);
        QCOMPARE(world->calls.lines().contains(u"frmCategory.showModal"_s), shown);
        QCOMPARE(memberships().size(), shown ? 1 : 0);
        if (!shown)
            QCOMPARE(
                description,
                u"カテゴリが少ないため選択画面を開けません。カテゴリを八つ以上登録してからやり直してください。"_s);
    }

    void treeWithoutItsCategoryRootIsAFailureForTheCaller()
    {
        QCOMPARE(errorOf([&] { SelectCategory(session(), Water); }), errors::IndexOutOfBounds);
        session().setMainWindow(nullptr);
        QCOMPARE(errorOf([&] { SelectCategory(session(), Water); }), errors::ObjectNotSet);
        QCOMPARE(world->calls.lines(), QStringList());
    }

    void filingThatFailsIsReported()
    {
        fillTree(8);
        chooser().whileModal = [&] { choose(u"A'"_s, u"分類1"_s); };
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
        world->dialogs.expect(failureBox(u"ClassifyCategory"_s, 91));
        SelectCategory(session(), Water);
        QCOMPARE(memberships(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestCategoryChoice)
#include "test_category_choice.moc"
