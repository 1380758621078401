// Every menu entry of the main window in every state: whether it can be chosen, and what comes of it.
#include "tests/main/main_window_fixture.h"
#include "tests/support/menu_walk.h"

#include <QFile>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Main = u"frmMainMenu"_s;
const QString Audit = u"Quillon システム監査部"_s;
const QString Operation = u"Quillon システム運用部"_s;

} // namespace

class TestMainMenuWalk : public MainWindowFixture
{
    Q_OBJECT

    /// No database; a database with nothing selected; the category A with its first row selected, a link and an open
    /// window.
    const QStringList states{u"no database"_s, u"database"_s, u"selection"_s};

    void arrange(const QString& state)
    {
        if (state == u"no database"_s)
            return;
        openSampleDatabase();
        if (state != u"selection"_s)
            return;
        chooseNode(u"A"_s);
        selectRows({0});
        WindowWorld::addRow(session().RsLink, {u"M-991231-001"_s, u"M-991231-002"_s});
        session().windows.showAuxiliary(u"frmSplash"_s);
        for (const QString& name : {u"Readme.txt"_s, u"Quillon 機能仕様.txt"_s}) {
            QFile file(world->folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
    }

    void expectFileDialog(FileDialog::Purpose purpose, const QString& fileName, const QString& folder,
                          const std::optional<QString>& answer) const
    {
        world->dialogs.expect(FileDialog{.purpose = purpose,
                                         .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                                         .fileName = fileName,
                                         .folder = folder,
                                         .promptBeforeOverwriting = purpose == FileDialog::Purpose::Save},
                              answer);
    }
    void expectEndQuestion() const
    {
        world->dialogs.expect(MessageBox{.text = u"Quillonを終了しますか。"_s,
                                         .title = Operation,
                                         .buttons = Buttons::OkCancel},
                              Answer::Cancel);
    }

    std::vector<WalkedEntry> fileMenu(bool withDatabase)
    {
        return {
            {u"mnuFile"_s, true},
            {u"mnuFileNew"_s, true,
             [this] { expectFileDialog(FileDialog::Purpose::Save, {}, world->folder.path(), std::nullopt); }},
            {u"mnuFileOpen"_s, true,
             [this, withDatabase] {
                 expectFileDialog(FileDialog::Purpose::Open,
                                  withDatabase ? world->folder.filePath(u"QUILLON.mdb"_s) : QString(),
                                  withDatabase ? world->folder.path() : QString(),
                                  world->folder.filePath(u"無い.mdb"_s));
                 expectNotice(u"指定されたファイルが見つかりません。"_s, u"Quillon データ調査分析部"_s);
             }},
            {u"mnuEnd"_s, true, [this] { expectEndQuestion(); }, std::nullopt,
             [this] { QCOMPARE(world->ends, 0); }}};
    }

    std::vector<WalkedEntry> textFiles(bool present)
    {
        const auto entry = [&](const QString& name, const QString& file) {
            return WalkedEntry{
                name, true,
                [this, present, file] {
                    if (!present)
                        expectNotice(u"『"_s + file + u"』が見つかりませんでした。"_s, Operation);
                },
                std::nullopt,
                [this, present, file] {
                    QCOMPARE(world->desktop.opened,
                             present ? QStringList({world->folder.filePath(file)}) : QStringList());
                }};
        };
        return {entry(u"mnuInfoReadme"_s, u"Readme.txt"_s),
                entry(u"mnuInfoRef"_s, u"Quillon 機能仕様.txt"_s)};
    }

    std::vector<WalkedEntry> withoutDatabase()
    {
        return fileMenu(false) +
               entries({u"mnuData"_s, u"mnuEntry"_s, u"mnuEntryMain"_s, u"mnuEntryRefDoc"_s,
                        u"mnuEntryRefFile"_s, u"mnuDataView"_s, u"mnuDataCategoryDelete"_s,
                        u"mnuDataCloseAll"_s, u"mnuDataDelete"_s, u"mnuCategory"_s, u"mnuCategoryEntry"_s,
                        u"mnuCategoryDelete"_s, u"mnuCategoryRename"_s, u"mnuFind"_s, u"mnuFindName"_s},
                       false) +
               entries({u"mnuInfo"_s}, true) +
               entries({u"mnuInfoLink"_s, u"mnuInfoCategory"_s, u"mnuInfoEntry"_s}, false) +
               textFiles(false) +
               std::vector<WalkedEntry>{{u"mnuInfoSystem"_s, true, {}, QStringList({Main, u"frmSplash"_s})}};
    }

    std::vector<WalkedEntry> withDatabase()
    {
        const auto tells = [this](const QString& name, const QString& text,
                                  const QString& title = u"Quillon"_s) {
            return WalkedEntry{name, true, [this, text, title] { expectNotice(text, title); }};
        };
        const auto opens = [](const QString& name, const QString& opened) {
            return WalkedEntry{name, true, {}, QStringList({Main, opened})};
        };
        return fileMenu(true) + entries({u"mnuData"_s, u"mnuEntry"_s}, true) +
               std::vector<WalkedEntry>{
                   opens(u"mnuEntryMain"_s, u"frmMainData"_s), opens(u"mnuEntryRefDoc"_s, u"frmRefDoc"_s),
                   opens(u"mnuEntryRefFile"_s, u"frmRefFileEntry"_s),
                   tells(u"mnuDataView"_s, u"データが選択されていません。"_s, Operation),
                   tells(u"mnuDataCategoryDelete"_s, u"カテゴリが選択されていません。"_s)} +
               entries({u"mnuDataCloseAll"_s}, true) +
               std::vector<WalkedEntry>{tells(u"mnuDataDelete"_s, u"データが選択されていません。"_s)} +
               entries({u"mnuCategory"_s}, true) +
               std::vector<WalkedEntry>{
                   {u"mnuCategoryEntry"_s, true,
                    [this] { expectQuestion(u"新規にカテゴリを登録しますか。"_s, Answer::Cancel); }},
                   tells(u"mnuCategoryDelete"_s, u"カテゴリが選択されていません。"_s),
                   tells(u"mnuCategoryRename"_s, u"指定された項目はカテゴリではありません。"_s)} +
               entries({u"mnuFind"_s}, true) +
               std::vector<WalkedEntry>{opens(u"mnuFindName"_s, u"frmFind"_s)} +
               entries({u"mnuInfo"_s}, true) +
               std::vector<WalkedEntry>{
                   tells(u"mnuInfoLink"_s, u"リンクは存在しません。"_s, u"Quillon リンク情報管理部"_s)} +
               entries({u"mnuInfoCategory"_s}, false) +
               std::vector<WalkedEntry>{opens(u"mnuInfoEntry"_s, u"frmEntryInfo"_s)} + textFiles(false) +
               std::vector<WalkedEntry>{opens(u"mnuInfoSystem"_s, u"frmSplash"_s)};
    }

    std::vector<WalkedEntry> withSelection()
    {
        const auto opens = [](const QString& name, const QString& opened) {
            return WalkedEntry{name, true, {}, QStringList({Main, u"frmSplash"_s, opened})};
        };
        const auto asks = [this](const QString& name, const QString& question) {
            return WalkedEntry{name, true, [this, question] { expectQuestion(question, Answer::Cancel); }};
        };
        return fileMenu(true) + entries({u"mnuData"_s, u"mnuEntry"_s}, true) +
               std::vector<WalkedEntry>{opens(u"mnuEntryMain"_s, u"frmMainData"_s),
                                        opens(u"mnuEntryRefDoc"_s, u"frmRefDoc"_s),
                                        opens(u"mnuEntryRefFile"_s, u"frmRefFileEntry"_s),
                                        opens(u"mnuDataView"_s, u"frmMainData"_s),
                                        {u"mnuDataCategoryDelete"_s,
                                         true,
                                         {},
                                         std::nullopt,
                                         [this] { QCOMPARE(memberships().size(), 3); }},
                                        {u"mnuDataCloseAll"_s, true, {}, QStringList({Main})},
                                        asks(u"mnuDataDelete"_s, u"<水> を削除しますか。"_s)} +
               entries({u"mnuCategory"_s}, true) +
               std::vector<WalkedEntry>{
                   asks(u"mnuCategoryEntry"_s, u"甲の下に新規のカテゴリを登録しますか。"_s),
                   {u"mnuCategoryDelete"_s, true,
                    [this] {
                        expectNotice(u"サブカテゴリが存在します。先にサブカテゴリを削除して下さい。"_s);
                    }},
                   asks(u"mnuCategoryRename"_s, u"カテゴリ：甲の名称を変更しますか。"_s)} +
               entries({u"mnuFind"_s}, true) +
               std::vector<WalkedEntry>{opens(u"mnuFindName"_s, u"frmFind"_s)} +
               entries({u"mnuInfo"_s}, true) +
               std::vector<WalkedEntry>{opens(u"mnuInfoLink"_s, u"frmLinkList"_s)} +
               entries({u"mnuInfoCategory"_s}, false) +
               std::vector<WalkedEntry>{opens(u"mnuInfoEntry"_s, u"frmEntryInfo"_s)} + textFiles(true) +
               entries({u"mnuInfoSystem"_s}, true); // its window is open already
    }

    std::vector<WalkedEntry> table(const QString& state)
    {
        if (state == u"no database"_s)
            return withoutDatabase();
        return state == u"database"_s ? withDatabase() : withSelection();
    }

private Q_SLOTS:
    void init() { makeWindow(); }
    void cleanup() { endWorld(); }

    void everyEntryIsInTheTable_data()
    {
        QTest::addColumn<QString>("state");
        for (const QString& state : states)
            QTest::newRow(qPrintable(state)) << state;
    }

    void everyEntryIsInTheTable()
    {
        QFETCH(QString, state);
        QCOMPARE(namesOf(table(state)), namesOfEntries(*window));
    }

    void everyEntryDoesWhatItSays_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<WalkedEntry>("entry");
        for (const QString& state : states) {
            for (const WalkedEntry& entry : table(state))
                QTest::newRow(qPrintable(state + u", "_s + entry.name)) << state << entry;
        }
    }

    void everyEntryDoesWhatItSays()
    {
        QFETCH(QString, state);
        QFETCH(WalkedEntry, entry);
        arrange(state);
        walk(*world, *window, entry);
    }
};

QTEST_MAIN(TestMainMenuWalk)
#include "test_main_menu_walk.moc"
