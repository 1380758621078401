#include "app/base/ports/main_window_port.h"
#include "core/categories.h"
#include "store/record_set.h"
#include "tests/support/errors_of.h"
#include "tests/support/modal_script.h"
#include "tests/support/window_probe.h"
#include "tests/support/window_world.h"
#include "ui/auxiliary/frmCategory.h"
#include "ui/widgets/keyed_tree.h"

#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Water = u"M-991231-001"_s;
const MessageBox NoCategory{.text = u"カテゴリを選択して下さい。"_s};

} // namespace

/// The window in which the person chooses a category, over the tree of the real main window.
class TestCategoryChooser : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<WindowWorld> world;
    std::unique_ptr<ModalScript> modals;

    Session& session() const { return world->session(); }
    QStringList memberships() const { return world->rowsOf(session().RsCategory); }
    void addCategories(const QStringList& identifiers) const
    {
        for (const QString& identifier : identifiers)
            world->addRow(session().RsCategoryID, {identifier, u"分類"_s + identifier});
        session().mainWindow().rebuildCategoryTree();
    }
    /// Lets the person choose a category for the datum and does this meanwhile.
    void choose(const std::function<void(frmCategory&, KeyedTree&)>& action) const
    {
        modals->expect<frmCategory>(u"frmCategory"_s, [&action](frmCategory& form) {
            action(form, *form.findChild<KeyedTree*>(u"tvwCategory"_s));
        });
        SelectCategory(session(), Water);
        WindowWorld::processEvents();
    }
    static void press(const frmCategory& form, const QString& name)
    {
        form.findChild<QPushButton*>(name)->click();
    }
    /// Leaves the values of an earlier choice.
    void chooseEarlier(bool flag) const
    {
        session().CategoryChosen = flag;
        session().ChosenCategoryID = u"C"_s;
        session().ChosenCategoryName = u"分類C"_s;
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        world->open(world->createDatabase());
        modals = std::make_unique<ModalScript>(session().windows);
        world->addRow(session().RsMain, {u"水"_s, Water, u"液体"_s});
        addCategories({u"A"_s, u"A-A"_s, u"B"_s, u"C"_s, u"D"_s, u"E"_s, u"F"_s, u"G"_s, u"G-A"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints() + modals->takeComplaints(), QStringList());
        modals.reset();
        world.reset();
    }

    void windowHasItsDesignTexts()
    {
        choose([](frmCategory& form, KeyedTree& tree) {
            QCOMPARE(form.windowTitle(), u"カテゴリ選択画面"_s);
            QCOMPARE(form.findChild<QPushButton*>(u"cmdOK"_s)->text(), u"OK(&O)"_s);
            QCOMPARE(form.findChild<QPushButton*>(u"cmdCancel"_s)->text(), u"Cancel(&C)"_s);
            QCOMPARE(tree.accessibleName(), u"カテゴリツリー"_s);
            QCOMPARE(form.focusWidget(), &tree);
            QCOMPARE(tabRound(form), QStringList({u"tvwCategory"_s, u"cmdOK"_s, u"cmdCancel"_s}));
            press(form, u"cmdCancel"_s);
        });
    }

    void treeMirrorsTheCategoriesOfTheMainWindow()
    {
        choose([this](frmCategory& form, KeyedTree& tree) {
            const MainWindowPort& main = session().mainWindow();
            QCOMPARE(tree.nodes().nodeCount(), main.nodeCount() - 8);
            for (int position = 1; position <= tree.nodes().nodeCount(); ++position) {
                QCOMPARE(tree.nodes().key(position), main.nodeKey(position + 8));
                QCOMPARE(tree.nodes().text(position), main.nodeText(position + 8));
            }
            QCOMPARE(tree.nodes().key(1), u"CATEGORY"_s);
            QCOMPARE(tree.selectedPosition(), 1);
            QVERIFY(tree.isExpanded(tree.nodes().indexOf(1)));
            press(form, u"cmdCancel"_s);
        });
    }

    void ninthNodeIsOpened()
    {
        choose([](frmCategory& form, KeyedTree& tree) {
            QStringList open;
            for (int position = 1; position <= tree.nodes().nodeCount(); ++position) {
                if (tree.isExpanded(tree.nodes().indexOf(position)))
                    open << tree.nodes().key(position);
            }
            QCOMPARE(tree.nodes().key(9), u"G"_s);
            QCOMPARE(open, QStringList({u"CATEGORY"_s, u"G"_s})); // "A" has a subcategory, too
            press(form, u"cmdCancel"_s);
        });
    }

    void rootStandsForNoCategory()
    {
        choose([this](frmCategory& form, KeyedTree& tree) {
            world->dialogs.expect(NoCategory);
            press(form, u"cmdOK"_s);
            QVERIFY(form.isVisible());
            QVERIFY(!session().CategoryChosen);
            tree.clearSelection(); // nothing selected at all
            world->dialogs.expect(NoCategory);
            press(form, u"cmdOK"_s);
            QVERIFY(form.isVisible());
            press(form, u"cmdCancel"_s);
        });
        QCOMPARE(memberships(), QStringList());
    }

    void subcategoryIsChosenWithItsFullIdentifier()
    {
        choose([](frmCategory& form, KeyedTree& tree) {
            tree.select(tree.nodes().position(u"A-A"_s));
            press(form, u"cmdOK"_s);
        });
        QVERIFY(session().CategoryChosen);
        QCOMPARE(session().ChosenCategoryID, u"A-A"_s);
        QCOMPARE(session().ChosenCategoryName, u"分類A-A"_s);
        QCOMPARE(memberships(), QStringList({u"A-A|M-991231-001"_s}));
        QCOMPARE(world->windowCount(u"frmCategory"_s), 0);
    }

    void cancelLeavesAllButTheFlag_data()
    {
        QTest::addColumn<bool>("byEscape");
        QTest::newRow("button") << false;
        QTest::newRow("Esc in the tree") << true;
    }

    void cancelLeavesAllButTheFlag()
    {
        QFETCH(bool, byEscape);
        chooseEarlier(true);
        choose([byEscape](frmCategory& form, KeyedTree& tree) {
            tree.select(2);
            if (byEscape)
                QTest::keyClick(&tree, Qt::Key_Escape);
            else
                press(form, u"cmdCancel"_s);
        });
        QVERIFY(!session().CategoryChosen);
        QCOMPARE(session().ChosenCategoryID, u"C"_s);
        QCOMPARE(session().ChosenCategoryName, u"分類C"_s);
        QCOMPARE(memberships(), QStringList());
    }

    void closeBoxLeavesAllAsItWas_data()
    {
        QTest::addColumn<bool>("chosenBefore");
        QTest::newRow("chosen before") << true;
        QTest::newRow("cancelled before") << false;
    }

    void closeBoxLeavesAllAsItWas()
    {
        QFETCH(bool, chosenBefore);
        chooseEarlier(chosenBefore);
        choose([](frmCategory& form, KeyedTree& tree) {
            tree.select(2);
            QVERIFY(form.close());
        });
        QCOMPARE(session().CategoryChosen, chosenBefore);
        QCOMPARE(session().ChosenCategoryID, u"C"_s);
        QCOMPARE(memberships(), chosenBefore ? QStringList({u"C|M-991231-001"_s}) : QStringList());
    }

    void enterInTheTreeIsOk()
    {
        choose([this](frmCategory& form, KeyedTree& tree) {
            world->dialogs.expect(NoCategory);
            QTest::keyClick(&tree, Qt::Key_Return);
            QVERIFY(form.isVisible());
            QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
            QCoreApplication::sendEvent(&tree, &held); // brings no second box
            QTest::keyRelease(&tree, Qt::Key_Escape);  // pressed elsewhere
            QVERIFY(form.isVisible());
            tree.select(2);
            QTest::keyClick(&tree, Qt::Key_Enter);
        });
        QCOMPARE(session().ChosenCategoryID, u"A"_s);
    }

    void enterPressesTheButtonThatHasTheFocus()
    {
        choose([](frmCategory& form, KeyedTree& tree) {
            tree.select(2);
            form.findChild<QPushButton*>(u"cmdOK"_s)->setFocus();
            QTest::keyClick(form.focusWidget(), Qt::Key_Return);
        });
        QCOMPARE(session().ChosenCategoryID, u"A"_s);
    }

    void everyUseFillsTheTreeAnew()
    {
        choose([](frmCategory& form, KeyedTree& tree) {
            tree.select(5);
            press(form, u"cmdCancel"_s);
        });
        addCategories({u"H"_s});
        choose([](frmCategory& form, KeyedTree& tree) {
            QCOMPARE(tree.nodes().nodeCount(), 11);
            QCOMPARE(tree.selectedPosition(), 1);
            press(form, u"cmdCancel"_s);
        });
    }

    void fewCategoriesAreAnErrorOfTheCaller()
    {
        session().RsCategoryID->deleteRowsIf(
            {0}, [](const RecordSet::Row& row) { return row.text(0) == u"F" || row.text(0) == u"D"; });
        session().mainWindow().rebuildCategoryTree();
        session().CategoryChosen = true;
        session().ChosenCategoryID = u"A"_s;
        for (int times = 0; times < 2; ++times) {
            QCOMPARE(errorOf([this] { SelectCategory(session(), Water); }), 35600);
            QCOMPARE(world->windowCount(u"frmCategory"_s), 0);
        }
        QCOMPARE(memberships(), QStringList());
        addCategories({u"D"_s}); // the eighth
        choose([](frmCategory& form, KeyedTree&) { press(form, u"cmdCancel"_s); });
    }
};

QTEST_MAIN(TestCategoryChooser)
#include "test_category_chooser.moc"
