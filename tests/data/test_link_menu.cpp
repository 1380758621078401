#include "core/data_selection.h"
#include "tests/data/twin_fixture.h"
#include "tests/support/drag.h"

#include <QDir>
#include <QFile>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Duplicate{.text = u"既に同一のリンクが存在します。"_s};
const MessageBox WhichFile{.text =
                               u"外部のファイルとリンクする場合は【はい】を、"
                               u"登録済みのファイルデータとリンクする場合は【いいえ】を選択してください。"_s,
                           .title = u"Quillon リンク情報管理部"_s,
                           .buttons = Buttons::YesNo};

MessageBox askLink(const QString& a, const QString& b)
{
    return {.text = u"<"_s + a + u"> と<"_s + b + u"> をリンクしますか。"_s, .buttons = Buttons::OkCancel};
}

} // namespace

/// The link menus of both data windows. Every test runs for a definition and for a document.
class TestLinkMenu : public TwinFixture
{
    Q_OBJECT

private:
    QString own;     // the datum of the window
    QString ownName; // "水" or "本"
    FormWindow* form = nullptr;

    /// Opens the window for the row of `bothKinds`.
    void open()
    {
        own = twin().first;
        ownName = twin().name;
        form = &world->show<DataForm>(own);
    }
    QStringList shownLinks() const { return rowsOf(FormWorld::rows(*form, u"lsvLink"_s)); }
    ReportList& linkList() const { return FormWorld::list(*form, u"lsvLink"_s); }
    void addLink(const QString& source, const QString& target) const
    {
        TestWorld::addRow(world->session.RsLink, {source, target});
    }

    /// Expects the data selection window and does this in it.
    void whileChoosing(const std::function<void(frmDataSelect&)>& action) const
    {
        world->modals.expect<frmDataSelect>(u"frmDataSelect"_s, action);
    }
    static void press(QWidget& window, const QString& button)
    {
        window.findChild<QPushButton*>(button)->click();
    }
    /// Selects the n-th row of the selection window and presses OK.
    static void chooseRow(QWidget& window, int row)
    {
        selectRow(FormWorld::list(window, u"lsvData"_s), row);
        press(window, u"cmdOK"_s);
    }

private Q_SLOTS:
    void init()
    {
        makeWorld();
        world->add(u"水"_s, Water, u"液体"_s);
        world->add(u"氷"_s, Ice, u"固体"_s);
        world->add(u"本"_s, Book, u"内容"_s);
        world->add(u"紙"_s, Paper, u"薄い"_s);
        world->add(u"絵.png"_s, Picture, u"未入力"_s);
    }

    void cleanup() { endWorld(); }

    void chosenDatumIsLinked_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("targetName");
        QTest::addColumn<QStringList>("listed");
        const QStringList definitions{u"水|定義|M-991231-001|"_s, u"氷|定義|M-991231-002|"_s};
        const QStringList documents{u"本|文献|R-991231-001|"_s, u"紙|文献|R-991231-002|"_s};
        QTest::newRow("definition to definition")
            << Water << u"mnuLinkMain"_s << Ice << u"氷"_s << definitions;
        QTest::newRow("definition to document")
            << Water << u"mnuLinkRefDoc"_s << Paper << u"紙"_s << documents;
        QTest::newRow("document to definition") << Book << u"mnuLinkMain"_s << Ice << u"氷"_s << definitions;
        QTest::newRow("document to document") << Book << u"mnuLinkRefDoc"_s << Paper << u"紙"_s << documents;
    }

    void chosenDatumIsLinked()
    {
        QFETCH(QString, entry);
        QFETCH(QString, target);
        QFETCH(QString, targetName);
        QFETCH(QStringList, listed);
        open();
        whileChoosing([&](frmDataSelect& window) {
            QCOMPARE(window.windowTitle(), u"データ選択画面 - リンク先を選択してください。"_s);
            QCOMPARE(rowsOf(FormWorld::rows(window, u"lsvData"_s)), listed);
            QVERIFY(world->session.LinkSourceMode);
            QCOMPARE(world->session.LinkSourceID, own);
            QCOMPARE(world->session.LinkSourceName, ownName);
            QCOMPARE(world->session.LinkSourceForm, dynamic_cast<DataWindow*>(form));
            QCOMPARE(shownLinks(), QStringList()); // until the choice has been made
            world->dialogs.expect(askLink(targetName, ownName));
            chooseRow(window, 1);
        });
        QVERIFY(FormWorld::choose(*form, entry));
        QCOMPARE(world->links(), QStringList({target + u'|' + own})); // the chosen one first
        QCOMPARE(shownLinks(),
                 QStringList({targetName + (target == Ice ? u"|定義|"_s : u"|文献|"_s) + target}));
        QVERIFY(world->session.LinkSourceMode);
    }

    void refusedLinkKeepsTheChoiceOpen_data() { bothKinds(); }

    void refusedLinkKeepsTheChoiceOpen()
    {
        addLink(Water, Ice);
        addLink(Ice, Book);
        open();
        const QStringList before = shownLinks();
        whileChoosing([&](frmDataSelect& window) {
            world->dialogs.expect(askLink(u"水"_s, ownName), Answer::Cancel);
            chooseRow(window, 0);
            QVERIFY(window.isVisible());
            world->dialogs.expect(askLink(u"氷"_s, ownName));
            world->dialogs.expect(Duplicate);
            chooseRow(window, 1);
            QVERIFY(window.isVisible());
            QCOMPARE(FormWorld::rows(window, u"lsvData"_s).rowCount(), 2);
            press(window, u"cmdCancel"_s);
        });
        QVERIFY(FormWorld::choose(*form, u"mnuLinkMain"_s));
        QCOMPARE(world->links().size(), 2);
        QCOMPARE(shownLinks(), before);
    }

    void registeredFileIsLinked_data() { bothKinds(); }

    void registeredFileIsLinked()
    {
        open();
        world->dialogs.expect(WhichFile, Answer::No);
        whileChoosing([&](frmDataSelect& window) {
            QCOMPARE(rowsOf(FormWorld::rows(window, u"lsvData"_s)),
                     QStringList({u"絵.png|FILE|F-991231-001|"_s}));
            world->dialogs.expect(askLink(u"絵.png"_s, ownName));
            chooseRow(window, 0);
        });
        QVERIFY(FormWorld::choose(*form, u"mnuLinkRefFile"_s));
        QCOMPARE(world->links(), QStringList({u"F-991231-001|"_s + own}));
        QCOMPARE(shownLinks(), QStringList({u"絵.png|FILE|F-991231-001"_s}));
    }

    void outsideFileIsRegisteredAndLinked_data() { bothKinds(); }

    void outsideFileIsRegisteredAndLinked()
    {
        open();
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        QFile outside(world->folder.filePath(u"図 1.txt"_s));
        QVERIFY(outside.open(QIODevice::WriteOnly));
        outside.close();
        world->dialogs.expect(WhichFile, Answer::Yes);
        world->modals.expect<frmRefFileEntry>(u"frmRefFileEntry"_s, [&](frmRefFileEntry& window) {
            QCOMPARE(window.fieldText(1), u"F-991231-002"_s);
            QVERIFY(world->session.LinkSourceMode);
            QCOMPARE(world->session.LinkSourceID, own);
            FormWorld::enter(FormWorld::name(window), outside.fileName());
            world->dialogs.expect(MessageBox{.text = u"本データを登録しました。"_s, .title = u"FILE"_s});
            press(window, u"cmdEntry"_s);
        });
        QVERIFY(FormWorld::choose(*form, u"mnuLinkRefFile"_s));
        QCOMPARE(world->registeredFiles().last(), u"図 1.txt|F-991231-002|未入力"_s);
        QCOMPARE(world->links(), QStringList({own + u"|F-991231-002"_s}));
        QCOMPARE(shownLinks(), QStringList({u"図 1.txt|FILE|F-991231-002"_s}));
        QVERIFY(QFile::exists(world->folder.filePath(u"RefFile/図 1.txt"_s)));
    }

    void cancelledRegistrationLinksNothing_data() { bothKinds(); }

    void cancelledRegistrationLinksNothing()
    {
        open();
        addLink(own, Ice); // by another window: shown only when the list is filled again
        world->dialogs.expect(WhichFile, Answer::Yes);
        world->modals.expect<frmRefFileEntry>(u"frmRefFileEntry"_s,
                                              [](frmRefFileEntry& window) { press(window, u"cmdCancel"_s); });
        QVERIFY(FormWorld::choose(*form, u"mnuLinkRefFile"_s));
        QCOMPARE(world->registeredFiles().size(), 1);
        QCOMPARE(world->links().size(), 1);
        QCOMPARE(shownLinks(), QStringList());
    }

    void registrationWindowThatIsOpenBecomesModal()
    {
        auto& entry = world->beginRegistration<frmRefFileEntry>();
        QVERIFY(!entry.isModal());
        form = &world->show(Water);
        world->dialogs.expect(WhichFile, Answer::Yes);
        world->modals.expect<frmRefFileEntry>(u"frmRefFileEntry"_s, [&](frmRefFileEntry& window) {
            QCOMPARE(&window, &entry);
            press(window, u"cmdCancel"_s);
        });
        QVERIFY(FormWorld::choose(*form, u"mnuLinkRefFile"_s));
        QCOMPARE(world->links(), QStringList());
    }

    void failedRegistrationIsToldByTheLastResort()
    {
        form = &world->show(Water);
        const auto table = std::exchange(world->session.RsLink, nullptr);
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        QFile outside(world->folder.filePath(u"a.txt"_s));
        QVERIFY(outside.open(QIODevice::WriteOnly));
        outside.close();
        world->dialogs.expect(WhichFile, Answer::Yes);
        world->modals.expect<frmRefFileEntry>(u"frmRefFileEntry"_s, [&](frmRefFileEntry& window) {
            FormWorld::enter(FormWorld::name(window), outside.fileName());
            world->dialogs.expect(MessageBox{.text = u"本データを登録しました。"_s, .title = u"FILE"_s});
            world->dialogs.expect(untrapped(91));
            press(window, u"cmdEntry"_s);
        });
        QVERIFY(FormWorld::choose(*form, u"mnuLinkRefFile"_s));
        QVERIFY(world->loggedUnder(u"mnuLinkRefFile_Click"_s, 91));
        world->session.RsLink = table;
    }

    void sourceDeletedWhileChoosingIsNotLinked()
    {
        form = &world->show(Water);
        whileChoosing([&](frmDataSelect& window) {
            selectRow(FormWorld::list(window, u"lsvData"_s), 0);
            world->dialogs.expect(
                MessageBox{.text = u"<水> を削除しますか。"_s, .buttons = Buttons::OkCancel});
            QVERIFY(FormWorld::choose(window, u"mnuDelete"_s));
            world->dialogs.expect(untrapped(3021)); // nothing is asked about what is gone
            chooseRow(window, 0);
            press(window, u"cmdCancel"_s);
        });
        QVERIFY(FormWorld::choose(*form, u"mnuLinkMain"_s));
        QCOMPARE(world->links(), QStringList());
        QVERIFY(FormWorld::closes(*form)); // there is nothing left to be updated
    }

    void windowThatIsGoneAfterTheChoiceIsLeftAlone()
    {
        form = &world->show(Water);
        const QPointer<FormWindow> source(form);
        whileChoosing([&](frmDataSelect& window) {
            QVERIFY(form->unload());
            FormWorld::processEvents();
            QVERIFY(world->session.LinkSourceForm == nullptr);
            world->dialogs.expect(askLink(u"氷"_s, u"水"_s));
            chooseRow(window, 1);
        });
        FormWorld::choose(*form, u"mnuLinkMain"_s);
        QVERIFY(source.isNull());
        QCOMPARE(world->links(), QStringList({u"M-991231-002|M-991231-001"_s}));
    }

    void entryWithoutAMeaningDoesNothing()
    {
        addLink(Water, Ice);
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Water});
        auto& water = world->show(Water);
        form = &water;
        for (const QString& list : {u"lsvLink"_s, u"lsvCategory"_s})
            selectRow(FormWorld::list(water, list), 0);
        FormWorld::enter(FormWorld::name(water), u"お湯"_s);
        QVERIFY(FormWorld::choose(water, u"mnuLinkCategory"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
        QVERIFY(!world->session.LinkSourceMode);
        QVERIFY(!world->session.CategoryChosen);
        QCOMPARE(water.fieldText(0), u"お湯"_s);
        QCOMPARE(shownLinks(), QStringList(u"氷|定義|M-991231-002"_s));
        QCOMPARE(rowsOf(FormWorld::rows(water, u"lsvCategory"_s)), QStringList(u"不明|A|"_s));
        QCOMPARE(world->links(), QStringList(u"M-991231-001|M-991231-002"_s));
        QCOMPARE(world->memberships(), QStringList(u"A|M-991231-001"_s));
        world->dialogs.expect(
            MessageBox{.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel},
            Answer::Cancel);
        QVERIFY(!FormWorld::closes(water)); // closing asks as before
    }

    void droppedIdentifierIsLinked_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("asks");
        QTest::addColumn<int>("answer");
        QTest::addColumn<QStringList>("links");
        const int ok = int(Answer::Ok);
        QTest::newRow("12 characters") << Ice << true << ok << QStringList{u"M-991231-001|M-991231-002"_s};
        QTest::newRow("12, cancelled") << Ice << true << int(Answer::Cancel) << QStringList();
        QTest::newRow("11 characters") << Ice.chopped(1) << false << ok << QStringList();
        QTest::newRow("13 characters") << (Ice + u'0') << false << ok << QStringList();
        QTest::newRow("none") << QString() << false << ok << QStringList();
    }

    void droppedIdentifierIsLinked()
    {
        QFETCH(QString, text);
        QFETCH(bool, asks);
        QFETCH(int, answer);
        QFETCH(QStringList, links);
        form = &world->show(Water);
        if (asks)
            world->dialogs.expect(askLink(u"水"_s, u"氷"_s), static_cast<Answer>(answer));
        drop(*linkList().viewport(), text);
        QCOMPARE(world->links(), links);
        QCOMPARE(shownLinks().size(), links.size());
        QVERIFY(!world->session.LinkSourceMode);
    }

    void droppedTwelveCharactersNeedNotBeAnIdentifier()
    {
        form = &world->show(Water);
        world->dialogs.expect(askLink(u"水"_s, u"不明"_s), Answer::Cancel);
        QVERIFY(drop(*linkList().viewport(), u"十二文字の長さの文字列だ"_s));
        QCOMPARE(world->links(), QStringList());
    }

    void dropOnAWindowThatRegistersDoesNothing()
    {
        auto& registering = world->beginRegistration();
        form = &registering;
        FormWorld::enter(FormWorld::name(*form), u"雲"_s);
        FormWorld::enter(FormWorld::definition(*form), u"水滴"_s);
        drop(*linkList().viewport(), Ice);
        QCOMPARE(world->links(), QStringList());
        QCOMPARE(shownLinks().size(), 0);
        world->dialogs.expect(MessageBox{.text = u"本データを登録しました。"_s});
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        world->dialogs.expect(askLink(u"雲"_s, u"氷"_s));
        QVERIFY(drop(*linkList().viewport(), Ice)); // now there is something to be linked
        QCOMPARE(world->links().size(), 1);
    }

    void droppingTheSameTwiceTellsOfTheLink()
    {
        addLink(Ice, Water);
        form = &world->show(Water);
        world->dialogs.expect(askLink(u"水"_s, u"氷"_s));
        world->dialogs.expect(Duplicate);
        QVERIFY(drop(*linkList().viewport(), Ice));
        QCOMPARE(world->links().size(), 1);
    }
};

QTEST_MAIN(TestLinkMenu)
#include "test_link_menu.moc"
