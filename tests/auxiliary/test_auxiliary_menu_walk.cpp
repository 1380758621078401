// Every menu entry of the auxiliary windows in every state: whether it can be chosen, and what comes of it.
#include "core/data_selection.h"
#include "core/links.h"
#include "store/record_set.h"
#include "store/session.h"
#include "tests/support/menu_walk.h"
#include "tests/support/modal_script.h"
#include "tests/support/window_probe.h"
#include "ui/auxiliary/frmCategory.h"
#include "ui/auxiliary/frmDataSelect.h"
#include "ui/auxiliary/frmLinkList.h"
#include "ui/main/frmMainMenu.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Main = u"frmMainMenu"_s;
const QString Empty = u"empty"_s;
const QString Unselected = u"rows"_s;
const QString Selected = u"row selected"_s;
const QString Choosing = u"choosing a link"_s;

} // namespace

class TestAuxiliaryMenuWalk : public QObject
{
    Q_OBJECT

    using Walk = std::vector<WalkedEntry>;

    std::unique_ptr<WindowWorld> world;

    Session& session() const { return world->session(); }
    void expect(const QString& text, const QString& title = u"Quillon"_s, Buttons buttons = Buttons::Ok,
                Answer answer = Answer::Ok) const
    {
        world->dialogs.expect(MessageBox{.text = text, .title = title, .buttons = buttons}, answer);
    }
    static void selectFirstRow(QWidget& form, const QString& list)
    {
        selectRow(*form.findChild<ReportList*>(list), 0);
    }

    Walk selectionTable(const QString& state) const
    {
        const auto tellsNoSelection = [this] {
            expect(u"データが選択されていません。"_s, u"Quillon システム運用部"_s);
        };
        const bool selected = state == Selected || state == Choosing;
        WalkedEntry view{u"mnuView"_s, true};
        if (!selected)
            view.expect = tellsNoSelection;
        else if (state == Selected)
            view.windows = QStringList({Main, u"frmDataSelect"_s, u"frmMainData"_s});
        else
            view.expect = [this] {
                expect(u"<水> と<本> をリンクしますか。"_s, u"Quillon"_s, Buttons::OkCancel, Answer::Cancel);
            };
        WalkedEntry deletion{u"mnuDelete"_s, true, tellsNoSelection};
        if (selected)
            deletion.expect = [this] {
                expect(u"<水> を削除しますか。"_s, u"Quillon"_s, Buttons::OkCancel, Answer::Cancel);
            };
        return {{u"mnuOpe"_s, true}, view, deletion, {u"mnuClose"_s, true, {}, QStringList(Main)}};
    }

    Walk linkTable(const QString& state) const
    {
        WalkedEntry show{u"mnuLinkShow"_s, true};
        WalkedEntry deletion{u"mnuLinkDelete"_s, true, [this] { expect(u"リンクが選択されていません。"_s); }};
        if (state == Selected) {
            show.windows = QStringList({Main, u"frmLinkList"_s, u"frmMainData"_s, u"frmRefDoc"_s});
            deletion.expect = [this] {
                expect(u"<水> と <本>のリンクを削除をしますか。"_s, u"Quillon"_s, Buttons::YesNo, Answer::No);
            };
        }
        return {{u"mnuLink"_s, true}, show, deletion, {u"mnuLinkClose"_s, true, {}, QStringList(Main)}};
    }

    static void addRows(const QStringList& states, const std::function<Walk(const QString&)>& table)
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<WalkedEntry>("entry");
        for (const QString& state : states) {
            for (const WalkedEntry& entry : table(state))
                QTest::newRow(qPrintable(state + u", "_s + entry.name)) << state << entry;
        }
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        world->open(world->createDatabase());
        WindowWorld::addRow(session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        WindowWorld::addRow(session().RsRefDoc, {u"本"_s, u"R-991231-001"_s, u"内容"_s});
        WindowWorld::addRow(session().RsLink, {u"M-991231-001"_s, u"R-991231-001"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void dataSelectionDoesWhatItsEntriesSay_data()
    {
        addRows({Empty, Unselected, Selected},
                [this](const QString& state) { return selectionTable(state); });
    }

    void dataSelectionDoesWhatItsEntriesSay()
    {
        QFETCH(QString, state);
        QFETCH(WalkedEntry, entry);
        CreateDataList(session(), state == Empty ? session().RsRefFile : session().RsMain, SelectionUse::Show,
                       ListFill::Replace);
        auto& form = *world->window<frmDataSelect>(u"frmDataSelect"_s);
        if (state == Selected)
            selectFirstRow(form, u"lsvData"_s);
        QCOMPARE(namesOf(selectionTable(state)), namesOfEntries(form));
        walk(*world, form, entry);
    }

    void dataSelectionLinksWhileALinkIsPending_data()
    {
        addRows({Choosing}, [this](const QString& state) { return selectionTable(state); });
    }

    void dataSelectionLinksWhileALinkIsPending()
    {
        QFETCH(WalkedEntry, entry);
        // Only the other order is new, so that the question comes.
        session().RsLink->deleteEveryRow();
        session().LinkSourceMode = true;
        session().LinkSourceID = u"R-991231-001"_s;
        ModalScript modals(session().windows);
        modals.expect<frmDataSelect>(u"frmDataSelect"_s, [&](frmDataSelect& form) {
            selectFirstRow(form, u"lsvData"_s);
            walk(*world, form, entry);
            if (world->windowCount(u"frmDataSelect"_s) > 0)
                form.unload();
        });
        CreateDataList(session(), session().RsMain, SelectionUse::Link, ListFill::Replace);
        QCOMPARE(modals.takeComplaints(), QStringList());
        QCOMPARE(WindowWorld::rowsOf(session().RsLink), QStringList());
    }

    void linkListDoesWhatItsEntriesSay_data()
    {
        addRows({Empty, Unselected, Selected}, [this](const QString& state) { return linkTable(state); });
    }

    void linkListDoesWhatItsEntriesSay()
    {
        QFETCH(QString, state);
        QFETCH(WalkedEntry, entry);
        SetAllLinkList(session());
        auto& form = *world->window<frmLinkList>(u"frmLinkList"_s);
        if (state == Empty) {
            session().RsLink->deleteEveryRow();
            expect(u"リンクは存在しません。"_s, u"Quillon リンク情報管理部"_s);
            SetAllLinkList(session());
        } else if (state == Selected) {
            selectFirstRow(form, u"lsvLink"_s);
        }
        QCOMPARE(namesOf(linkTable(state)), namesOfEntries(form));
        walk(*world, form, entry);
        QCOMPARE(WindowWorld::rowsOf(session().RsLink).size(), state == Empty ? 0 : 1);
    }

    void otherWindowsHaveNoMenus_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString& name : {u"frmFind"_s, u"frmEntryInfo"_s, u"frmSplash"_s})
            QTest::newRow(qPrintable(name)) << name;
    }

    void otherWindowsHaveNoMenus()
    {
        QFETCH(QString, name);
        session().windows.showAuxiliary(name);
        QCOMPARE(namesOfEntries(*world->window<FormWindow>(name)), QStringList());
        QCOMPARE(namesOfEntries(dynamic_cast<frmCategory&>(session().windows.categoryChooser())),
                 QStringList());
    }
};

QTEST_MAIN(TestAuxiliaryMenuWalk)
#include "test_auxiliary_menu_walk.moc"
