// The search window: its texts, what it refuses, its keys, and how it hands over what it finds.
#include "tests/auxiliary/search_world.h"
#include "tests/support/compare_text.h"
#include "tests/support/held_key.h"
#include "tests/support/modal_script.h"

#include <QPointer>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox NoKind{.text = u"検索するデータの種別が選択されていません。"_s,
                        .title = u"Quillon システム監査部"_s};
const MessageBox NoText{.text = u"検索する文字列が入力されていません。"_s,
                        .title = u"Quillon システム監査部"_s};

} // namespace

class TestSearchWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SearchWorld> world;

    Session& session() const { return world->session(); }
    /// Leaves a definition as the pending source of a link that the person did not choose.
    void leaveALinkPending() const
    {
        selectRow(*WindowWorld::control<ReportList>(world->mainWindow(), u"lsvData"_s), 0);
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuDataView"_s));
        auto* definition = world->window<FormWindow>(u"frmMainData"_s);
        ModalScript modals(session().windows);
        modals.expect<frmDataSelect>(u"frmDataSelect"_s, [](frmDataSelect& form) {
            form.findChild<QPushButton*>(u"cmdCancel"_s)->click();
        });
        QVERIFY(WindowWorld::choose(*definition, u"mnuLinkMain"_s));
        QCOMPARE(modals.takeComplaints(), QStringList());
        QVERIFY(definition->unload());
        WindowWorld::processEvents();
        QVERIFY(session().LinkSourceMode);
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<SearchWorld>();
        world->addDefinition(u"水"_s, u"M-991231-001"_s, u"透明な液体"_s);
        world->addDefinition(u"氷"_s, u"M-991231-002"_s, u"水の固体"_s);
        world->addDocument(u"川の本"_s, u"R-991231-001"_s, u"上流から\r\n下流まで水が流れる。"_s);
        world->addDocument(u"火の本"_s, u"R-991231-002"_s, u"炎"_s);
        world->addFile(u"水車.png"_s, u"F-991231-001"_s, u"水車.png"_s);
        // The main window lists what there is now.
        world->open(world->path);
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        WindowWorld::processEvents();
        QVERIFY(QApplication::overrideCursor() == nullptr);
        world.reset();
    }

    void windowHasItsTexts()
    {
        frmFind& form = world->searchWindow();
        QVERIFY(compareText(form.windowTitle(), u"全文検索画面"));
        QVERIFY(form.isVisible());
        QVERIFY(!form.isModal());
        QCOMPARE(labelsOf(world->textBox()), QStringList({u"検索文字列 ："_s}));
        QCOMPARE(form.findChild<QLabel*>(u"lblFind"_s)->textFormat(), Qt::PlainText);
        QVERIFY(compareText(world->checkBox(u"chkMain"_s).text(), u"定義データ(&M)"));
        QVERIFY(compareText(world->checkBox(u"chkRefDoc"_s).text(), u"文献データ(&R)"));
        QVERIFY(compareText(world->checkBox(u"chkRefFile"_s).text(), u"ファイルデータ(&F) "));
        QVERIFY(compareText(form.findChild<QPushButton*>(u"cmdFind"_s)->text(), u"検索(&S)"));
        for (const QString& name :
             {u"txtFind"_s, u"chkMain"_s, u"chkRefDoc"_s, u"chkRefFile"_s, u"cmdFind"_s})
            QCOMPARE(form.findChild<QWidget*>(name)->accessibleName(), QString());
    }

    void allKindsAreChosenAtFirst()
    {
        QCOMPARE(world->textBox().text(), QString());
        for (const QString& name : {u"chkMain"_s, u"chkRefDoc"_s, u"chkRefFile"_s})
            QVERIFY2(world->checkBox(name).isChecked(), qPrintable(name));
        QCOMPARE(world->searchWindow().focusWidget(), &world->textBox());
    }

    void tabGoesThroughTheWindowAsTheEyeDoes()
    {
        QCOMPARE(tabRound(world->searchWindow()),
                 QStringList({u"txtFind"_s, u"chkMain"_s, u"chkRefDoc"_s, u"chkRefFile"_s, u"cmdFind"_s}));
    }

    void menuOpensOneWindowThatKeepsWhatWasTyped()
    {
        world->enter(u"水"_s, u"R"_s);
        frmFind& form = world->searchWindow();
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuFindName"_s));
        QCOMPARE(world->windowCount(u"frmFind"_s), 1);
        QCOMPARE(&world->searchWindow(), &form);
        QCOMPARE(world->textBox().text(), u"水"_s);
        QVERIFY(world->checkBox(u"chkRefDoc"_s).isChecked());
    }

    void closedWindowComesBackAsAtFirst()
    {
        world->enter(u"水"_s, u"R"_s);
        QVERIFY(world->searchWindow().unload());
        WindowWorld::processEvents();
        QCOMPARE(world->textBox().text(), QString());
        QVERIFY(world->checkBox(u"chkMain"_s).isChecked());
    }

    void whatIsMissingIsTold_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("kinds");
        QTest::addColumn<bool>("kindIsMissing");
        QTest::newRow("no kind") << u"水"_s << QString() << true;
        QTest::newRow("neither kind nor text") << QString() << QString() << true;
        QTest::newRow("no text, definitions") << QString() << u"M"_s << false;
        QTest::newRow("no text, documents") << QString() << u"R"_s << false;
        QTest::newRow("no text, files") << QString() << u"F"_s << false;
        QTest::newRow("no text, all kinds") << QString() << u"MRF"_s << false;
    }

    void whatIsMissingIsTold()
    {
        QFETCH(QString, text);
        QFETCH(QString, kinds);
        QFETCH(bool, kindIsMissing);
        world->dialogs.expect(kindIsMissing ? NoKind : NoText);
        world->search(text, kinds);
        QVERIFY(world->results() == nullptr);
        QVERIFY(world->eventLog.lines.isEmpty());
    }

    void refusalLeavesTheResultsAlone()
    {
        world->search(u"氷"_s, u"M"_s);
        const QStringList before = world->resultRows();
        world->results()->setCaption(u"前"_s);
        world->dialogs.expect(NoKind);
        world->search(u"水"_s, QString());
        world->dialogs.expect(NoText);
        world->search(QString(), u"M"_s);
        QCOMPARE(world->resultRows(), before);
        QVERIFY(compareText(world->results()->windowTitle(), u"前"));
    }

    void matchesAreListedByKindInAFixedOrder()
    {
        // However the boxes were checked.
        world->searchWindow();
        for (int time = 0; time < 2; ++time) { // all are checked at first
            for (const QString& name : {u"chkRefFile"_s, u"chkRefDoc"_s, u"chkMain"_s})
                world->checkBox(name).click();
        }
        world->textBox().insert(u"水"_s);
        world->pressSearch();
        QCOMPARE(world->resultRows(),
                 QStringList({u"水|定義|M-991231-001|"_s, u"氷|定義|M-991231-002|"_s,
                              u"川の本|文献|R-991231-001|"_s, u"水車.png|FILE|F-991231-001|"_s}));
        QVERIFY(compareText(world->results()->windowTitle(), u"検索結果"));
        QVERIFY(world->results()->isVisible());
        QVERIFY(!world->results()->isModal());
        QVERIFY(compareText(world->resultPanel(1), u"表示モード"));
        QVERIFY(compareText(world->resultPanel(2), u""));
        QVERIFY(compareText(world->resultPanel(3), u"表示データ数：1")); // of the kind listed last
        QCOMPARE(world->windowCount(u"frmFind"_s), 1);                   // the search window stays
    }

    void onlyCheckedKindsAreSearched_data()
    {
        QTest::addColumn<QString>("kinds");
        QTest::addColumn<QStringList>("expected");
        const QStringList definitions{u"水"_s, u"氷"_s};
        const QStringList documents{u"川の本"_s};
        const QStringList files{u"水車.png"_s};
        QTest::newRow("definitions") << u"M"_s << definitions;
        QTest::newRow("documents") << u"R"_s << documents;
        QTest::newRow("files") << u"F"_s << files;
        QTest::newRow("definitions and documents") << u"MR"_s << definitions + documents;
        QTest::newRow("definitions and files") << u"MF"_s << definitions + files;
        QTest::newRow("documents and files") << u"RF"_s << documents + files;
    }

    void onlyCheckedKindsAreSearched()
    {
        QFETCH(QString, kinds);
        QFETCH(QStringList, expected);
        world->search(u"水"_s, kinds);
        QCOMPARE(world->names(), expected);
    }

    void kindsWithoutAMatchAreSilent()
    {
        world->search(u"下流まで"_s);
        QCOMPARE(world->resultRows(), QStringList({u"川の本|文献|R-991231-001|"_s}));
        QVERIFY(compareText(world->resultPanel(3), u"表示データ数：0")); // files were listed last
    }

    void searchWithoutAnyMatchShowsAnEmptyWindow()
    {
        world->search(u"月"_s);
        QCOMPARE(world->resultRows(), QStringList());
        QVERIFY(world->results()->isVisible());
        QVERIFY(compareText(world->results()->windowTitle(), u"検索結果"));
        QVERIFY(compareText(world->resultPanel(1), u"表示モード"));
        QVERIFY(compareText(world->resultPanel(3), u"表示データ数：0"));
    }

    void furtherSearchesAddTheirMatchesBelow()
    {
        world->search(u"氷"_s);
        const frmDataSelect* results = world->results();
        world->search(u"本"_s);
        world->search(u"氷"_s, u"M"_s); // found before, listed again
        QCOMPARE(world->results(), results);
        QCOMPARE(world->names(), QStringList({u"氷"_s, u"川の本"_s, u"火の本"_s, u"氷"_s}));
        QVERIFY(compareText(world->resultPanel(3), u"表示データ数：1"));
        world->search(u"月"_s);
        QCOMPARE(world->names().size(), 4);
        QVERIFY(compareText(world->resultPanel(3), u"表示データ数：0"));
    }

    void closedResultsBeginAnew()
    {
        world->search(u"氷"_s);
        world->closeResults();
        world->search(u"火"_s);
        QCOMPARE(world->names(), QStringList({u"火の本"_s}));
        QVERIFY(compareText(world->results()->windowTitle(), u"検索結果"));
    }

    void everySearchGivesTheResultsTheirTitle()
    {
        world->search(u"氷"_s);
        world->results()->setCaption(u"検索結果 - リンク先を選択してください。"_s);
        world->search(u"火"_s);
        QVERIFY(compareText(world->results()->windowTitle(), u"検索結果"));
    }

    void foundDatumIsShown()
    {
        world->search(u"固体"_s);
        doubleClickRow(world->resultList(), 0);
        QCOMPARE(world->windowCount(u"frmMainData"_s), 1);
        QVERIFY(compareText(world->window<FormWindow>(u"frmMainData"_s)->windowTitle(), u"定義画面 - 氷"));
        QVERIFY(world->results() != nullptr);
    }

    void searchEndsAPendingLink()
    {
        leaveALinkPending();
        const QString source = session().LinkSourceID;
        world->search(u"固体"_s);
        QVERIFY(!session().LinkSourceMode);
        QCOMPARE(session().LinkSourceID, source); // the console tells it still
        QCOMPARE(session().LinkSourceName, u"水"_s);
        QVERIFY(!world->results()->isModal());
        QVERIFY(compareText(world->results()->windowTitle(), u"検索結果"));
        QVERIFY(compareText(world->resultPanel(1), u"表示モード"));
        // Shown, not linked: no question comes.
        doubleClickRow(world->resultList(), 0);
        QVERIFY(compareText(world->window<FormWindow>(u"frmMainData"_s)->windowTitle(), u"定義画面 - 氷"));
        QCOMPARE(WindowWorld::rowsOf(session().RsLink), QStringList());
    }

    void searchWithoutAMatchEndsAPendingLinkToo()
    {
        leaveALinkPending();
        world->search(u"月"_s, u"F"_s);
        QVERIFY(!session().LinkSourceMode);
    }

    void enterInTheTextSearches_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Return") << Qt::Key_Return;
        QTest::newRow("Enter") << Qt::Key_Enter;
    }

    void enterInTheTextSearches()
    {
        QFETCH(Qt::Key, key);
        world->enter(u"氷"_s, u"M"_s);
        QTest::keyPress(&world->textBox(), key);
        // Held down it would list the same again and again.
        repeatKey(world->textBox(), key);
        WindowWorld::processEvents();
        repeatKey(world->textBox(), key);
        WindowWorld::processEvents();
        QTest::keyRelease(&world->textBox(), key);
        QCOMPARE(world->names(), QStringList({u"氷"_s}));
    }

    void enterHeldDownIsRefusedOnce()
    {
        world->enter(u"水"_s, QString());
        world->dialogs.expect(NoKind);
        QTest::keyPress(&world->textBox(), Qt::Key_Return);
        // The box has been answered by a press that goes on.
        repeatKey(world->textBox(), Qt::Key_Return);
        WindowWorld::processEvents();
        QTest::keyRelease(&world->textBox(), Qt::Key_Return);
    }

    void enterConfirmsACompositionFirst()
    {
        world->enter(QString(), u"M"_s);
        compose(world->textBox(), u"氷"_s);
        QTest::keyClick(&world->textBox(), Qt::Key_Return);
        QVERIFY(world->results() == nullptr);
        QTest::keyClick(&world->textBox(), Qt::Key_Return);
        QCOMPARE(world->names(), QStringList({u"氷"_s}));
    }

    void buttonSearchesForWhatIsComposed()
    {
        world->enter(QString(), u"M"_s);
        compose(world->textBox(), u"氷"_s);
        world->searchWindow().findChild<QPushButton*>(u"cmdFind"_s)->click(); // as its access key does
        QCOMPARE(world->names(), QStringList({u"氷"_s}));
    }

    void enterPressesTheButtonThatHasTheFocus()
    {
        world->enter(u"氷"_s, u"M"_s);
        auto* button = world->searchWindow().findChild<QPushButton*>(u"cmdFind"_s);
        button->setFocus();
        QTest::keyClick(button, Qt::Key_Return);
        QCOMPARE(world->names(), QStringList({u"氷"_s}));
    }

    void enterSearchesFromEachControl()
    {
        for (const QString& name : {u"chkMain"_s, u"chkRefDoc"_s, u"chkRefFile"_s}) {
            world->enter(u"氷"_s, u"M"_s);
            const bool checked = world->checkBox(name).isChecked();
            world->checkBox(name).setFocus();
            holdKey(world->checkBox(name), Qt::Key_Return);
            QCOMPARE(world->names(), QStringList({u"氷"_s}));
            QCOMPARE(world->checkBox(name).isChecked(), checked);
            world->results()->unload();
            WindowWorld::processEvents();
        }
    }

    void escapeInTheTextClosesTheWindow_data()
    {
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::newRow("alone") << Qt::KeyboardModifiers(Qt::NoModifier);
        QTest::newRow("with Shift") << Qt::KeyboardModifiers(Qt::ShiftModifier);
    }

    void escapeInTheTextClosesTheWindow()
    {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        const QPointer<frmFind> form(&world->searchWindow());
        world->search(u"氷"_s);
        QTest::keyClick(&world->textBox(), Qt::Key_Escape, modifiers);
        WindowWorld::processEvents();
        QVERIFY(form.isNull());
        QCOMPARE(world->windowCount(u"frmFind"_s), 0);
        QCOMPARE(world->names(), QStringList({u"氷"_s})); // what was found stays
    }

    void escapeBelongsToACompositionFirst()
    {
        compose(world->textBox(), u"みず"_s);
        QTest::keyClick(&world->textBox(), Qt::Key_Escape);
        QCOMPARE(world->windowCount(u"frmFind"_s), 1);
        compose(world->textBox(), QString());
        QTest::keyClick(&world->textBox(), Qt::Key_Escape);
        QCOMPARE(world->windowCount(u"frmFind"_s), 0);
    }

    void escapeThatAnsweredABoxClosesNothing()
    {
        world->searchWindow();
        repeatKey(world->textBox(), Qt::Key_Escape);
        WindowWorld::processEvents();
        QCOMPARE(world->windowCount(u"frmFind"_s), 1);
    }

    void escapeClosesFromEachControl()
    {
        for (const QString& name : {u"chkMain"_s, u"chkRefDoc"_s, u"chkRefFile"_s, u"cmdFind"_s}) {
            auto* control = world->searchWindow().findChild<QWidget*>(name);
            control->setFocus();
            repeatKey(*control, Qt::Key_Escape); // it has answered a box
            QCOMPARE(world->windowCount(u"frmFind"_s), 1);
            QTest::keyClick(control, Qt::Key_Escape);
            WindowWorld::processEvents();
            QCOMPARE(world->windowCount(u"frmFind"_s), 0);
        }
    }

    void otherKeysGoToTheTextBox()
    {
        QTest::keyClicks(&world->textBox(), u"a'b*"_s);
        QTest::keyClick(&world->textBox(), Qt::Key_Backspace);
        QVERIFY(compareText(world->textBox().text(), u"a'b"));
    }

    void pointerShowsTheWorkUntilABoxComes()
    {
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 3075));
        world->dialogs.meanwhile([] {
            QVERIFY(QApplication::overrideCursor() != nullptr);
            QCoreApplication::processEvents(); // as the box does
            QVERIFY(QApplication::overrideCursor() == nullptr);
        });
        world->dialogs.expect(failureBox(u"CreateDataList"_s, 91));
        world->search(u"'"_s, u"M"_s);
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }
};

QTEST_MAIN(TestSearchWindow)
#include "test_search_window.moc"
