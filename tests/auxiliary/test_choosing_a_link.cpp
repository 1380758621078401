#include "core/close_all_form.h"
#include "core/data_records.h"
#include "core/data_selection.h"
#include "store/record_set.h"
#include "tests/support/failure_box.h"
#include "tests/support/modal_script.h"
#include "tests/support/window_probe.h"
#include "tests/support/window_world.h"
#include "ui/auxiliary/frmDataSelect.h"
#include "ui/widgets/status_panels.h"

#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Choosing = u"データ選択画面 - リンク先を選択してください。"_s;

} // namespace

/// The data selection window in link mode.
class TestChoosingALink : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<WindowWorld> world;
    std::unique_ptr<ModalScript> modals;

    Session& session() const { return world->session(); }
    void fill(const std::shared_ptr<RecordSet>& recordSet, SelectionUse use) const
    {
        QCOMPARE(CreateDataList(session(), recordSet, use, ListFill::Replace), qint16(0));
        WindowWorld::processEvents();
    }
    /// Lists the definitions for a link to the document and does this while the person chooses.
    void choose(const std::function<void(frmDataSelect&)>& action) const
    {
        modals->expect<frmDataSelect>(u"frmDataSelect"_s, action);
        fill(session().RsMain, SelectionUse::Link);
    }
    frmDataSelect* loaded() const { return world->window<frmDataSelect>(u"frmDataSelect"_s); }
    static ReportList& list(const frmDataSelect& form) { return *form.findChild<ReportList*>(u"lsvData"_s); }
    static QString panel(const frmDataSelect& form, int number)
    {
        return form.findChild<StatusPanels*>(u"sbStatus"_s)->text(number);
    }
    static void press(const frmDataSelect& form, const QString& name)
    {
        form.findChild<QPushButton*>(name)->click();
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        world->open(world->createDatabase());
        modals = std::make_unique<ModalScript>(session().windows);
        world->addRow(session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        world->addRow(session().RsMain, {u"氷"_s, u"M-991231-002"_s, u"固体"_s});
        world->addRow(session().RsRefDoc, {u"本"_s, u"R-991231-001"_s, u"内容"_s});
        session().LinkSourceMode = true;
        session().LinkSourceID = u"R-991231-001"_s;
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints() + modals->takeComplaints(), QStringList());
        modals.reset();
        world.reset();
    }

    void modeAndCountAreWrittenAfterTheChoice()
    {
        choose([](frmDataSelect& form) {
            QCOMPARE(form.windowTitle(), Choosing);
            QVERIFY(form.isModal());
            QCOMPARE(panel(form, 1), QString());
            QCOMPARE(panel(form, 3), QString());
            QCOMPARE(list(form).rows().rowCount(), 2);
            press(form, u"cmdCancel"_s);
        });
        const frmDataSelect* hidden = loaded(); // loaded again by the writing
        QVERIFY(hidden != nullptr);
        QVERIFY(!hidden->isVisible());
        QCOMPARE(panel(*hidden, 1), u"リンクモード"_s);
        QCOMPARE(panel(*hidden, 3), u"表示データ数：2"_s);
        QCOMPARE(hidden->windowTitle(), u"データ選択画面"_s);
        QCOMPARE(list(*hidden).rows().rowCount(), 0);
    }

    void nextChoiceFindsTheHiddenWindow()
    {
        choose([](frmDataSelect& form) { press(form, u"cmdCancel"_s); });
        const frmDataSelect* hidden = loaded();
        choose([hidden](frmDataSelect& form) {
            QCOMPARE(&form, hidden);
            QCOMPARE(form.windowTitle(), Choosing); // once: a fresh window has the design's title
            QVERIFY(form.isModal());
            QCOMPARE(list(form).rows().rowCount(), 2);
            press(form, u"cmdCancel"_s);
        });
        QCOMPARE(world->windowCount(u"frmDataSelect"_s), 1);
    }

    void showingAfterAChoiceUsesTheHiddenWindow()
    {
        choose([](frmDataSelect& form) { press(form, u"cmdCancel"_s); });
        const frmDataSelect* hidden = loaded();
        fill(session().RsRefDoc, SelectionUse::Show);
        QCOMPARE(loaded(), hidden);
        QVERIFY(hidden->isVisible());
        QVERIFY(!hidden->isModal());
        QCOMPARE(hidden->windowTitle(), u"データ選択画面"_s);
        QCOMPARE(panel(*hidden, 1), u"表示モード"_s);
        QCOMPARE(panel(*hidden, 3), u"表示データ数：1"_s);
    }

    void closingAllUnloadsTheHiddenWindow()
    {
        choose([](frmDataSelect& form) { press(form, u"cmdCancel"_s); });
        QCOMPARE(world->windowCount(u"frmDataSelect"_s), 1);
        CloseAllForm(session());
        WindowWorld::processEvents();
        QCOMPARE(world->windowCount(u"frmDataSelect"_s), 0);
    }

    void captionGrowsWhileTheWindowStaysLoaded()
    {
        choose([this](frmDataSelect& form) {
            fill(session().RsRefDoc, SelectionUse::Show);
            QCOMPARE(form.windowTitle(), Choosing); // keeps what choosing has appended
            modals->expect<frmDataSelect>(u"frmDataSelect"_s, [&form](frmDataSelect& again) {
                QCOMPARE(&again, &form);
                QCOMPARE(again.windowTitle(), Choosing + u" - リンク先を選択してください。"_s);
                press(again, u"cmdCancel"_s);
            });
            fill(session().RsMain, SelectionUse::Link);
        });
        QCOMPARE(loaded()->windowTitle(), u"データ選択画面"_s);
    }

    void openWindowBecomesModalForAChoice()
    {
        fill(session().RsRefDoc, SelectionUse::Show);
        session().LinkSourceMode = true; // the data window notes its source
        const frmDataSelect* open = loaded();
        QVERIFY(!open->isModal());
        choose([open](frmDataSelect& form) {
            QCOMPARE(&form, open);
            QVERIFY(form.isModal());
            QCOMPARE(panel(form, 1), u"表示モード"_s); // from before
            QCOMPARE(list(form).rows().rowCount(), 2);
            press(form, u"cmdCancel"_s);
        });
    }

    void chosenDatumIsLinkedAndTheWindowUnloaded()
    {
        choose([this](frmDataSelect& form) {
            world->dialogs.expect(
                MessageBox{.text = u"<氷> と<本> をリンクしますか。"_s, .buttons = Buttons::OkCancel});
            doubleClickRow(list(form), 1);
        });
        QCOMPARE(world->rowsOf(session().RsLink), QStringList({u"M-991231-002|R-991231-001"_s}));
        QVERIFY(!loaded()->isVisible());
        QCOMPARE(world->windowCount(u"frmMainData"_s), 0); // nothing was shown
    }

    void refusedLinkLeavesTheWindowOpen()
    {
        world->addRow(session().RsLink, {u"R-991231-001"_s, u"M-991231-001"_s});
        choose([this](frmDataSelect& form) {
            selectRow(list(form), 0);
            world->dialogs.expect(
                MessageBox{.text = u"<水> と<本> をリンクしますか。"_s, .buttons = Buttons::OkCancel});
            world->dialogs.expect(MessageBox{.text = u"既に同一のリンクが存在します。"_s});
            QTest::keyClick(&list(form), Qt::Key_Return);
            QVERIFY(form.isVisible());
            selectRow(list(form), 1);
            world->dialogs.expect(
                MessageBox{.text = u"<氷> と<本> をリンクしますか。"_s, .buttons = Buttons::OkCancel},
                Answer::Cancel);
            QVERIFY(WindowWorld::choose(form, u"mnuView"_s));
            QVERIFY(form.isVisible());
            QCOMPARE(list(form).rows().rowCount(), 2);
            QTest::keyClick(&list(form), Qt::Key_Escape);
        });
        QCOMPARE(world->rowsOf(session().RsLink).size(), 1);
    }

    void datumThatGotTheIdentifierOfTheSourceIsNotLinked()
    {
        ShowData(session(), u"R-991231-001"_s);
        auto& document = *world->window<FormWindow>(u"frmRefDoc"_s);
        modals->expect<frmDataSelect>(u"frmDataSelect"_s, [this](frmDataSelect& form) {
            RecordSet& documents = *session().RsRefDoc;
            documents.moveFirst();
            documents.deleteRow();
            world->addRow(session().RsRefDoc, {u"新聞"_s, u"R-991231-009"_s, u"別"_s});
            world->addRow(session().RsRefDoc, {u"別の本"_s, u"R-991231-001"_s, u"別の内容"_s});
            world->dialogs.expect(untrapped(3021)); // and no question
            doubleClickRow(list(form), 1);
            QVERIFY(form.isVisible());
            form.unload();
        });
        QVERIFY(WindowWorld::choose(document, u"mnuLinkMain"_s));
        QCOMPARE(world->rowsOf(session().RsLink), QStringList());
    }

    void emptyTableIsShownEmpty()
    {
        modals->expect<frmDataSelect>(u"frmDataSelect"_s, [](frmDataSelect& form) {
            QCOMPARE(list(form).rows().rowCount(), 0);
            QVERIFY(form.close());
        });
        fill(session().RsRefFile, SelectionUse::Link);
        QCOMPARE(panel(*loaded(), 3), u"表示データ数：0"_s);
    }

    void countIsThatAfterTheChoice()
    {
        choose([this](frmDataSelect& form) {
            selectRow(list(form), 0);
            world->dialogs.expect(
                MessageBox{.text = u"<水> を削除しますか。"_s, .buttons = Buttons::OkCancel});
            QTest::keyClick(&list(form), Qt::Key_Delete);
            QCOMPARE(panel(form, 3), u"表示データ数：1"_s);
            press(form, u"cmdCancel"_s);
        });
        QCOMPARE(panel(*loaded(), 3), u"表示データ数：1"_s);
    }

    void missingTableIsReportedWithoutAChoice()
    {
        world->dialogs.expect(failureBox(u"CreateDataList"_s, 91));
        QCOMPARE(CreateDataList(session(), nullptr, SelectionUse::Link, ListFill::Replace), qint16(0));
        QVERIFY(session().LinkSourceMode);
    }
};

QTEST_MAIN(TestChoosingALink)
#include "test_choosing_a_link.moc"
