// Every menu entry of the data windows in every state: whether it can be chosen, and what comes of it.
#include "app/base/ports/data_window.h"
#include "core/data_records.h"
#include "store/record_set.h"
#include "tests/support/failure_box.h"
#include "tests/support/menu_walk.h"
#include "tests/support/modal_script.h"
#include "tests/support/window_probe.h"
#include "ui/auxiliary/frmCategory.h"
#include "ui/auxiliary/frmDataSelect.h"
#include "ui/main/frmMainMenu.h"

#include <QFile>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Main = u"frmMainMenu"_s;
const QString Operation = u"Quillon システム運用部"_s;
const QString NoDatabase = u"no database"_s;
const QString Registering = u"registering"_s;
const QString Registered = u"registered"_s;
const QString Shown = u"shown"_s;
const QString Related = u"shown with relations"_s; // a link, a category and another window

} // namespace

class TestDataMenuWalk : public QObject
{
    Q_OBJECT

    using Walk = std::vector<WalkedEntry>;

    std::unique_ptr<WindowWorld> world;
    std::unique_ptr<ModalScript> modals;
    FormWindow* form = nullptr;
    const QStringList states{NoDatabase, Registering, Registered, Shown, Related};

    Session& session() const { return world->session(); }
    void expect(const QString& text, const QString& title = u"Quillon"_s, Buttons buttons = Buttons::Ok,
                Answer answer = Answer::Ok) const
    {
        world->dialogs.expect(MessageBox{.text = text, .title = title, .buttons = buttons}, answer);
    }
    void expectCancelled(const QString& windowName) const
    {
        modals->expect<FormWindow>(
            windowName, [](FormWindow& shown) { shown.findChild<QPushButton*>(u"cmdCancel"_s)->click(); });
    }
    DataWindow& data() const
    {
        auto* const window = dynamic_cast<DataWindow*>(form);
        if (window == nullptr)
            qFatal("this is no window of a datum");
        return *window;
    }
    ReportModel& rows(const QString& listName) const
    {
        return form->findChild<ReportList*>(listName)->rows();
    }

    /// A small database: two data of a kind, and as many categories as the category chooser needs.
    void openDatabase(const QString& first, const QString& second,
                      const std::shared_ptr<RecordSet> Session::*table)
    {
        world->open(world->createDatabase());
        for (const QString& key : {u"A"_s, u"B"_s, u"C"_s, u"D"_s, u"E"_s, u"F"_s, u"G"_s, u"H"_s})
            WindowWorld::addRow(session().RsCategoryID, {key, u"分類"_s + key});
        WindowWorld::addRow(session().*table, {u"水"_s, first, u"液体"_s});
        WindowWorld::addRow(session().*table, {u"氷"_s, second, u"固体"_s});
        world->open(session().OpenDb->path());
    }

    /// Brings a definition's or document's window ("M", "R") into a state.
    void arrange(const QString& kind, const QString& state)
    {
        const QString name = kind == u"M" ? u"frmMainData"_s : u"frmRefDoc"_s;
        const QString first = kind + u"-991231-001"_s;
        const QString second = kind + u"-991231-002"_s;
        openDatabase(first, second, kind == u"M" ? &Session::RsMain : &Session::RsRefDoc);
        if (state == Shown || state == Related) {
            if (state == Related) {
                WindowWorld::addRow(session().RsLink, {first, second});
                WindowWorld::addRow(session().RsCategory, {u"B"_s, first});
                session().windows.showAuxiliary(u"frmEntryInfo"_s);
            }
            ShowData(session(), first);
        } else {
            CreateRegisterForm(session(), kind);
        }
        WindowWorld::processEvents();
        form = world->window<FormWindow>(name);
        if (state == Registering || state == Shown)
            return;
        if (state == Related) {
            for (const QString& list : {u"lsvLink"_s, u"lsvCategory"_s})
                selectRow(*form->findChild<ReportList*>(list), 0);
            return;
        }
        data().setFieldText(0, u"雲"_s);
        data().setFieldText(2, u"水滴"_s);
        if (state == NoDatabase) {
            session().closeDatabase(); // under the windows that are open
            return;
        }
        if (kind == u"M")
            expect(u"本データを登録しました。"_s);
        QVERIFY(WindowWorld::choose(*form, u"mnuDataEntry"_s));
    }

    /// The entries that end a window, which asks first when something has not been saved.
    Walk closing(const QString& state) const
    {
        const auto answerNo = [this, state] {
            if (state == NoDatabase)
                expect(u"現在のデータを登録しますか。"_s, u"Quillon"_s, Buttons::YesNoCancel, Answer::No);
        };
        // Beside the window there is, in one state, another one.
        const QStringList others =
            state == Related ? QStringList({Main, u"frmEntryInfo"_s}) : QStringList(Main);
        return Walk{{u"mnuDataChange"_s, true}, // there is no other data window
                    {u"mnuDataCloseAll"_s, true, answerNo, QStringList(Main)},
                    {u"mnuDataClose"_s, true, answerNo, others}};
    }

    WalkedEntry update(const QString& kind) const
    {
        return {u"mnuDataUpdate"_s, true, [this, kind] {
                    expect(u"本データを更新しました。"_s,
                           kind == u"M" ? u"定義"_s : u"Quillon 文献データ管理部"_s);
                }};
    }
    WalkedEntry deletion(const QString& state) const
    {
        return {u"mnuDataDelete"_s, true, [this, state] {
                    expect(state == Registered ? u"<雲> を削除しますか。"_s : u"<水> を削除しますか。"_s,
                           u"Quillon"_s, Buttons::OkCancel, Answer::Cancel);
                }};
    }
    WalkedEntry registration(const QString& kind, const QString& state) const
    {
        return {u"mnuDataEntry"_s, true, [this, kind, state] {
                    if (state == Registering)
                        expect(u"必須項目が入力されていません。"_s, u"Quillon システム監査部"_s);
                    else
                        expect(u"対処不能なエラーが発生しました。\r\n説明："_s +
                                   standardDescription(errors::ObjectNotSet),
                               u"Quillon 障害対策部"_s);
                }};
    }

    /// The Link and Category menus.
    Walk relations(const QString& kind, const QString& state) const
    {
        const bool shows = state != NoDatabase && state != Registering;
        QStringList links{u"mnuLink"_s,         u"mnuLinkMain"_s, u"mnuLinkRefDoc"_s, u"mnuLinkRefFile"_s,
                          u"mnuLinkCategory"_s, u"mnuLinkView"_s, u"mnuLinkDelete"_s};
        const QStringList categories{u"mnuCategory"_s, u"mnuCategoryEntry"_s, u"mnuCategoryDelete"_s};
        if (kind != u"M")
            links.removeOne(u"mnuLinkCategory"_s);
        if (!shows)
            return entries(links + categories, false);

        const QString window = kind == u"M" ? u"frmMainData"_s : u"frmRefDoc"_s;
        const QStringList before =
            state == Related ? QStringList({Main, u"frmEntryInfo"_s, window}) : QStringList({Main, window});
        // The window for choosing is loaded once more, hidden, when it has been closed.
        const QStringList chosen = before + QStringList(u"frmDataSelect"_s);
        const auto choosing = [this] { expectCancelled(u"frmDataSelect"_s); };
        const auto isSource = [this] { QCOMPARE(session().LinkSourceID, data().fieldText(1)); };
        const bool related = state == Related;
        Walk walked{
            {u"mnuLink"_s, true},
            {u"mnuLinkMain"_s, true, choosing, chosen, isSource},
            {u"mnuLinkRefDoc"_s, true, choosing, chosen, isSource},
            {u"mnuLinkRefFile"_s, true,
             [this, choosing] {
                 expect(u"外部のファイルとリンクする場合は【はい】を、登録済みのファイルデータとリンクする"
                        u"場合は【いいえ】を選択してください。"_s,
                        u"Quillon リンク情報管理部"_s, Buttons::YesNo, Answer::No);
                 choosing();
             },
             chosen, isSource}};
        if (kind == u"M")
            walked.push_back({u"mnuLinkCategory"_s, true}); // nothing comes of it
        walked.push_back({u"mnuLinkView"_s, true,
                          [this, related] {
                              if (!related)
                                  expect(u"データが選択されていません。"_s, Operation);
                          },
                          related ? before + QStringList(window) : before});
        walked.push_back({u"mnuLinkDelete"_s, true,
                          [this, related] {
                              if (related)
                                  expect(u"<氷> と <水> のリンクを削除しました。"_s);
                              else
                                  expect(u"リンクは存在しません。"_s, Operation);
                          },
                          before, [this] { QCOMPARE(rows(u"lsvLink"_s).rowCount(), 0); }});
        return walked +
               Walk{{u"mnuCategory"_s, true},
                    {u"mnuCategoryEntry"_s, true, [this] { expectCancelled(u"frmCategory"_s); }, before},
                    {u"mnuCategoryDelete"_s, true,
                     [this, related] {
                         if (!related)
                             expect(u"カテゴリが選択されていません。"_s);
                     },
                     before, [this] { QCOMPARE(rows(u"lsvCategory"_s).rowCount(), 0); }}};
    }

    Walk definitionTable(const QString& state) const
    {
        const Walk menu = entries({u"mnuData"_s}, true);
        const Walk rest = closing(state) + relations(u"M"_s, state);
        if (state != NoDatabase && state != Registering)
            return menu + Walk{deletion(state), update(u"M"_s)} +
                   entries({u"mnuDataEntry"_s, u"mnuDataNoDef"_s}, false) + rest;
        const auto asks = [this] {
            expect(u"未定義登録を行いますか。"_s, u"定義"_s, Buttons::OkCancel, Answer::Cancel);
        };
        return menu + entries({u"mnuDataDelete"_s, u"mnuDataUpdate"_s}, false) +
               Walk{registration(u"M"_s, state), {u"mnuDataNoDef"_s, true, asks}} + rest;
    }

    Walk documentTable(const QString& state) const
    {
        const Walk menu = entries({u"mnuOpe"_s}, true);
        const Walk load{{u"mnuDataLoadText"_s, true, [this] {
                             world->dialogs.expect(FileDialog{.purpose = FileDialog::Purpose::Open,
                                                              .filter = u"ﾃｷｽﾄﾌｧｲﾙ (*.txt)|*.txt"_s},
                                                   std::nullopt);
                         }}};
        const Walk rest = load + closing(state) + relations(u"R"_s, state);
        if (state == NoDatabase || state == Registering)
            return menu + Walk{registration(u"R"_s, state)} +
                   entries({u"mnuDataUpdate"_s, u"mnuDataDelete"_s}, false) + rest;
        return menu + entries({u"mnuDataEntry"_s}, false) + Walk{update(u"R"_s), deletion(state)} + rest;
    }

    Walk table(const QString& kind, const QString& state) const
    {
        return kind == u"M" ? definitionTable(state) : documentTable(state);
    }

    void forEachState(const std::function<void(const QString& kind, const QString& state)>& visit) const
    {
        for (const QString& kind : {u"M"_s, u"R"_s}) {
            for (const QString& state : states)
                visit(kind, state);
        }
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        modals = std::make_unique<ModalScript>(session().windows);
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints() + modals->takeComplaints(), QStringList());
        modals.reset();
        world.reset();
    }

    void everyEntryIsInTheTable_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("state");
        forEachState([](const QString& kind, const QString& state) {
            QTest::newRow(qPrintable(kind + u", "_s + state)) << kind << state;
        });
    }

    void everyEntryIsInTheTable()
    {
        QFETCH(QString, kind);
        QFETCH(QString, state);
        arrange(kind, state);
        QCOMPARE(namesOf(table(kind, state)), namesOfEntries(*form));
    }

    void everyEntryDoesWhatItSays_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("state");
        QTest::addColumn<WalkedEntry>("entry");
        forEachState([this](const QString& kind, const QString& state) {
            for (const WalkedEntry& entry : table(kind, state))
                QTest::newRow(qPrintable(kind + u", "_s + state + u", "_s + entry.name))
                    << kind << state << entry;
        });
    }

    void everyEntryDoesWhatItSays()
    {
        QFETCH(QString, kind);
        QFETCH(QString, state);
        QFETCH(WalkedEntry, entry);
        arrange(kind, state);
        walk(*world, *form, entry);
    }

    void changeShowsTheOtherWindow_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("definition") << u"M"_s;
        QTest::newRow("document") << u"R"_s;
    }

    void changeShowsTheOtherWindow()
    {
        QFETCH(QString, kind);
        arrange(kind, Shown);
        ShowData(session(), kind + u"-991231-002"_s);
        WindowWorld::processEvents();
        auto* second = world->window<FormWindow>(form->windowName(), 1);
        QTRY_COMPARE(QApplication::activeWindow(), second);
        walk(*world, *second, {u"mnuDataChange"_s, true});
        QTRY_COMPARE(QApplication::activeWindow(), form);
        walk(*world, *form, {u"mnuDataChange"_s, true});
        QTRY_COMPARE(QApplication::activeWindow(), second);
    }

    void fileRegistrationCanOnlyRegister_data()
    {
        QTest::addColumn<bool>("withDatabase");
        QTest::newRow("no database") << false;
        QTest::newRow("database") << true;
    }

    void fileRegistrationCanOnlyRegister()
    {
        QFETCH(bool, withDatabase);
        world->open(world->createDatabase());
        CreateRegisterForm(session(), u"F"_s);
        if (!withDatabase)
            session().closeDatabase(); // under the windows that are open
        WindowWorld::processEvents();
        form = world->window<FormWindow>(u"frmRefFileEntry"_s);
        const Walk walked{
            {u"mnuData"_s, true},
            {u"mnuDataEntry"_s, true,
             [this] { expect(u"必須項目が入力されていません。"_s, u"Quillon システム監査部"_s); }},
            {u"mnuOpeClose"_s, true, {}, std::nullopt, [this] { QVERIFY(form->isVisible()); }}};
        QCOMPARE(namesOf(walked), namesOfEntries(*form));
        for (const WalkedEntry& entry : walked)
            walk(*world, *form, entry);
    }

    void fileRegistrationEndsItsWindow()
    {
        world->open(world->createDatabase());
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        QFile file(world->folder.filePath(u"図.png"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        CreateRegisterForm(session(), u"F"_s);
        form = world->window<FormWindow>(u"frmRefFileEntry"_s);
        data().setFieldText(0, file.fileName());
        walk(*world, *form,
             {u"mnuDataEntry"_s, true, [this] { expect(u"本データを登録しました。"_s, u"FILE"_s); },
              QStringList(Main),
              [this] {
                  QCOMPARE(WindowWorld::rowsOf(session().RsRefFile),
                           QStringList({u"図.png|F-991231-001|未入力"_s}));
              }});
    }
};

QTEST_MAIN(TestDataMenuWalk)
#include "test_data_menu_walk.moc"
