#include "tools/stage.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/keyed_tree.h"

#include <QFile>

using namespace Qt::Literals::StringLiterals;

namespace quillon::tour
{

namespace
{

void writeFile(const QString& path, const QString& text)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(text.toUtf8());
}

} // namespace

void playDocumentsAndFiles(Stage& stage)
{
    stage.guide.say(u"文献データを登録する: テキストファイルを読み込む"_s);
    stage.choose(stage.mainWindow(), u"mnuEntryRefDoc"_s);
    if (FormWindow* window = stage.lastWindow(u"frmRefDoc"_s)) {
        const QString path = stage.folder + u"/お茶の覚え書き.txt"_s;
        writeFile(path, u"新茶は八十八夜のころに摘む。\n茶葉は湿気と光を嫌うので、密閉して冷暗所に置く。\n"
                        u"開封したら一か月ほどで飲み切るのがよい。\n"_s);
        stage.type(*window, u"txtFields(0)"_s, u"お茶の覚え書き"_s);
        stage.dialogs.expectFile(path);
        stage.choose(*window, u"mnuDataLoadText"_s);
        stage.press(*window, u"cmdSize(0)"_s);
        stage.guide.picture(*window, u"document-registering"_s);
        stage.choose(*window, u"mnuDataEntry"_s);
        window->unload();
    }

    stage.guide.say(u"外部のファイルをファイルデータとして登録する"_s);
    stage.choose(stage.mainWindow(), u"mnuEntryRefFile"_s);
    if (FormWindow* window = stage.lastWindow(u"frmRefFileEntry"_s)) {
        const QString path = stage.folder + u"/茶会の日程.csv"_s;
        writeFile(path, u"日付,場所\n五月三日,茶室\n"_s);
        stage.dialogs.expectFile(path);
        stage.press(*window, u"cmdPath"_s);
        stage.guide.picture(*window, u"file-registering"_s);
        stage.dialogs.expectBox(u"本データを登録しました。"_s, Answer::Ok, u"box-file-registered"_s);
        stage.press(*window, u"cmdEntry"_s);
    }
}

void playRelations(Stage& stage)
{
    stage.guide.say(u"定義データから文献データへリンクする"_s);
    stage.chooseNode(u"M_DIV"_s);
    stage.selectRow(stage.mainWindow(), u"lsvData"_s, u"番茶"_s);
    stage.choose(stage.mainWindow(), u"mnuDataView"_s);
    FormWindow* window = stage.lastWindow(u"frmMainData"_s);
    if (window == nullptr)
        return;
    stage.whileModal(u"frmDataSelect"_s, [&](FormWindow& selection) {
        stage.selectRow(selection, u"lsvData"_s, u"お茶の覚え書き"_s);
        stage.guide.picture(selection, u"selection-link"_s);
        stage.dialogs.expectBox(u"<お茶の覚え書き> と<番茶> をリンクしますか。"_s, Answer::Ok, u"box-link"_s);
        stage.press(selection, u"cmdOK"_s);
    });
    stage.choose(*window, u"mnuLinkRefDoc"_s);

    stage.guide.say(u"登録済みのファイルデータへリンクする"_s);
    stage.dialogs.expectBox(
        u"外部のファイルとリンクする場合は【はい】を、登録済みのファイルデータとリンクする場合は"
        u"【いいえ】を選択してください。"_s,
        Answer::No, u"box-link-file"_s);
    stage.whileModal(u"frmDataSelect"_s, [&](FormWindow& selection) {
        stage.selectRow(selection, u"lsvData"_s, u"茶会の日程.csv"_s);
        stage.dialogs.expectBox(u"<茶会の日程.csv> と<番茶> をリンクしますか。"_s, Answer::Ok);
        stage.press(selection, u"cmdOK"_s);
    });
    stage.choose(*window, u"mnuLinkRefFile"_s);

    stage.guide.say(u"カテゴリ選択画面で分類する"_s);
    stage.whileModal(u"frmCategory"_s, [&](FormWindow& chooser) {
        auto* tree = chooser.findChild<KeyedTree*>(u"tvwCategory"_s);
        tree->expandAll();
        tree->select(tree->nodes().position(u"D-A"_s));
        stage.guide.picture(chooser, u"category-chooser"_s);
        stage.press(chooser, u"cmdOK"_s);
    });
    stage.choose(*window, u"mnuCategoryEntry"_s);
    stage.guide.picture(*window, u"definition-linked"_s);

    stage.guide.say(u"リンク先の文献を開く"_s);
    stage.selectRow(*window, u"lsvLink"_s, u"お茶の覚え書き"_s);
    stage.choose(*window, u"mnuLinkView"_s);
    stage.picture(u"frmRefDoc"_s, u"document"_s);

    stage.guide.say(u"リンクと分類を解く"_s);
    stage.selectRow(*window, u"lsvLink"_s, u"茶会の日程.csv"_s);
    stage.dialogs.expectBox(u"<茶会の日程.csv> と <番茶> のリンクを削除しました。"_s, Answer::Ok);
    stage.choose(*window, u"mnuLinkDelete"_s);
    stage.selectRow(*window, u"lsvCategory"_s, u"道具"_s);
    stage.choose(*window, u"mnuCategoryDelete"_s);

    stage.guide.say(u"データをリンクと分類ごと削除する"_s);
    stage.dialogs.expectBox(u"<番茶> を削除しますか。"_s, Answer::Ok, u"box-delete"_s);
    stage.dialogs.expectBox(u"< 番茶 >を削除しました。"_s, Answer::Ok);
    stage.choose(*window, u"mnuDataDelete"_s);
}

} // namespace quillon::tour
