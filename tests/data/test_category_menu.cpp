#include "tests/data/twin_fixture.h"
#include "ui/widgets/keyed_tree.h"

#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox NothingSelected{.text = u"カテゴリが選択されていません。"_s};
const QString TooFew =
    u"カテゴリが少ないため選択画面を開けません。カテゴリを八つ以上登録してからやり直してください。"_s;

} // namespace

/// The category menu of both data windows. Every test runs for a definition and for a document.
class TestCategoryMenu : public TwinFixture
{
    Q_OBJECT

private:
    QString own;
    FormWindow* form = nullptr;

    void open()
    {
        own = twin().first;
        form = &world->show<DataForm>(own);
    }
    ReportList& categories() const { return FormWorld::list(*form, u"lsvCategory"_s); }
    QStringList shownCategories() const { return rowsOf(categories().rows()); }
    void file(const QString& category, const QString& identifier) const
    {
        TestWorld::addRow(world->session.RsCategory, {category, identifier});
    }

    /// Chooses to classify and does this in the category chooser.
    void classify(const std::function<void(frmCategory&, KeyedTree&)>& action) const
    {
        world->modals.expect<frmCategory>(u"frmCategory"_s, [&action](frmCategory& window) {
            action(window, *window.findChild<KeyedTree*>(u"tvwCategory"_s));
        });
        QVERIFY(FormWorld::choose(*form, u"mnuCategoryEntry"_s));
    }
    static void press(QWidget& window, const QString& button)
    {
        window.findChild<QPushButton*>(button)->click();
    }

private Q_SLOTS:
    void init()
    {
        makeWorld();
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"本"_s, Book, u"内容"_s);
    }

    void cleanup() { endWorld(); }

    void chosenCategoryGetsTheDatum_data() { bothKinds(); }

    void chosenCategoryGetsTheDatum()
    {
        world->giveCategories(8);
        open();
        classify([](frmCategory& window, KeyedTree& tree) {
            QCOMPARE(tree.nodes().nodeCount(), 9);
            QCOMPARE(tree.nodes().text(1), u"カテゴリ"_s);
            QCOMPARE(tree.nodes().key(9), u"H"_s);
            tree.select(3);
            press(window, u"cmdOK"_s);
        });
        QCOMPARE(world->memberships(), QStringList({u"B|"_s + own}));
        QCOMPARE(shownCategories(), QStringList({u"分類2|B|"_s}));
        QVERIFY(world->session.CategoryChosen);
        QCOMPARE(world->session.ChosenCategoryID, u"B"_s);
        QCOMPARE(world->session.ChosenCategoryName, u"分類2"_s);
    }

    void subcategoryTakesTheDatumOutOfItsAncestors_data() { bothKinds(); }

    void subcategoryTakesTheDatumOutOfItsAncestors()
    {
        world->giveCategories(8);
        world->mainWindow.nodes.push_back({u"A-B"_s, u"川"_s, u"A"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-B"_s, u"川"_s});
        file(u"A"_s, Water);
        file(u"A"_s, Book);
        open();
        classify([](frmCategory& window, KeyedTree& tree) {
            tree.select(10);
            press(window, u"cmdOK"_s);
        });
        QCOMPARE(world->session.ChosenCategoryID, u"A-B"_s);
        QCOMPARE(shownCategories(), QStringList({u"川|A-B|"_s}));
        QCOMPARE(world->memberships().size(), 2);
    }

    void cancelFilesNothing_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("byEscape");
        QTest::newRow("definition, button") << Water << false;
        QTest::newRow("definition, Esc") << Water << true;
        QTest::newRow("document, button") << Book << false;
        QTest::newRow("document, Esc") << Book << true;
    }

    void cancelFilesNothing()
    {
        QFETCH(bool, byEscape);
        world->giveCategories(8);
        world->session.CategoryChosen = true; // from an earlier choice
        world->session.ChosenCategoryID = u"C"_s;
        open();
        file(u"D"_s, own); // by another window
        classify([byEscape](frmCategory& window, KeyedTree& tree) {
            tree.select(3);
            if (byEscape)
                QTest::keyClick(&tree, Qt::Key_Escape);
            else
                press(window, u"cmdCancel"_s);
        });
        QVERIFY(!world->session.CategoryChosen);
        QCOMPARE(world->session.ChosenCategoryID, u"C"_s);
        QCOMPARE(world->memberships(), QStringList({u"D|"_s + own}));
        QCOMPARE(shownCategories(), QStringList({u"分類4|D|"_s})); // filled again all the same
    }

    void closeBoxFilesInTheEarlierCategoryAgain_data() { bothKinds(); }

    void closeBoxFilesInTheEarlierCategoryAgain()
    {
        world->giveCategories(8);
        open();
        classify([](frmCategory& window, KeyedTree& tree) {
            tree.select(3);
            press(window, u"cmdOK"_s);
        });
        const auto closeBox = [](frmCategory& window, KeyedTree& tree) {
            tree.select(5);
            window.close();
        };
        classify(closeBox);
        QCOMPARE(world->memberships(), QStringList({u"B|"_s + own})); // not twice
        selectRow(categories(), 0);
        QVERIFY(FormWorld::choose(*form, u"mnuCategoryDelete"_s));
        QCOMPARE(world->memberships(), QStringList());
        classify(closeBox);
        QCOMPARE(world->memberships(), QStringList({u"B|"_s + own}));
        QCOMPARE(shownCategories(), QStringList({u"分類2|B|"_s}));
    }

    void fewCategoriesAreToldByTheLastResortEveryTime_data() { bothKinds(); }

    void fewCategoriesAreToldByTheLastResortEveryTime()
    {
        world->giveCategories(7);
        world->session.CategoryChosen = true;
        world->session.ChosenCategoryID = u"A"_s;
        open();
        for (int times = 0; times < 2; ++times) {
            world->dialogs.expect(untrapped(TooFew));
            QVERIFY(FormWorld::choose(*form, u"mnuCategoryEntry"_s));
            QVERIFY(world->loggedUnder(u"mnuCategoryEntry_Click"_s, 35600));
            QVERIFY(world->loaded(u"frmCategory"_s) == nullptr);
        }
        QCOMPARE(world->memberships(), QStringList());
        QCOMPARE(world->eventLog.lines.size(), 2);
    }

    void selectedCategoryIsLeftWithoutAsking_data() { bothKinds(); }

    void selectedCategoryIsLeftWithoutAsking()
    {
        world->giveCategories(2);
        for (const QString& identifier : {Water, Book}) {
            file(u"A"_s, identifier);
            file(u"B"_s, identifier);
        }
        open();
        selectRow(categories(), 1);
        QVERIFY(FormWorld::choose(*form, u"mnuCategoryDelete"_s));
        QCOMPARE(shownCategories(), QStringList({u"分類1|A|"_s}));
        QCOMPARE(world->memberships().size(), 3);
        QVERIFY(!world->memberships().contains(u"B|"_s + own));
    }

    void categoryThatReplacedTheListedOneIsNotLeft_data() { bothKinds(); }

    void categoryThatReplacedTheListedOneIsNotLeft()
    {
        world->giveCategories(1);
        for (const QString& identifier : {Water, Book})
            file(u"A"_s, identifier);
        open();
        world->session.RsCategoryID->moveFirst();
        world->session.RsCategoryID->deleteRow();
        TestWorld::addRow(world->session.RsCategoryID,
                          {u"A"_s, u"別"_s}); // the datum is filed there elsewhere
        selectRow(categories(), 0);
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(*form, u"mnuCategoryDelete"_s));
        QVERIFY(world->loggedUnder(u"mnuCategoryDelete_Click"_s, 3021));
        QCOMPARE(world->memberships().size(), 2);
    }

    void emptyListHasNothingToLeave_data() { bothKinds(); }

    void emptyListHasNothingToLeave()
    {
        open();
        world->dialogs.expect(NothingSelected);
        QVERIFY(FormWorld::choose(*form, u"mnuCategoryDelete"_s));
    }

    void rowsWithoutASelectionAreNothingToLeave_data() { bothKinds(); }

    void rowsWithoutASelectionAreNothingToLeave()
    {
        for (const QString& identifier : {Water, Book})
            file(u"A"_s, identifier);
        open();
        world->dialogs.expect(NothingSelected);
        QVERIFY(FormWorld::choose(*form, u"mnuCategoryDelete"_s));
        QCOMPARE(world->memberships().size(), 2);
    }

    void membershipDeletedElsewhereIsToldByTheLastResort_data() { bothKinds(); }

    void membershipDeletedElsewhereIsToldByTheLastResort()
    {
        for (const QString& identifier : {Water, Book})
            file(u"A"_s, identifier);
        open();
        world->session.RsCategory->findFirst(u"Object_ID = '"_s + own + u"'"_s);
        world->session.RsCategory->deleteRow();
        selectRow(categories(), 0);
        world->dialogs.expect(untrapped(3021));
        QVERIFY(FormWorld::choose(*form, u"mnuCategoryDelete"_s));
        QVERIFY(world->loggedUnder(u"mnuCategoryDelete_Click"_s, 3021));
        QCOMPARE(world->memberships().size(), 1);
        QCOMPARE(shownCategories().size(), 1); // filled again only after success
    }
};

QTEST_MAIN(TestCategoryMenu)
#include "test_category_menu.moc"
