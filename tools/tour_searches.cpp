#include "tools/stage.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/keyed_tree.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::tour
{

void playCategories(Stage& stage)
{
    stage.guide.say(u"カテゴリを作り、名前を変え、削除する"_s);
    stage.chooseNode(u"B"_s);
    stage.dialogs.expectBox(u"成分の下に新規のカテゴリを登録しますか。"_s, Answer::Ok, u"box-category"_s);
    stage.dialogs.expectInput(u"ビタミン"_s, u"input-category"_s);
    stage.choose(stage.mainWindow(), u"mnuCategoryEntry"_s);
    stage.chooseNode(u"B-A"_s);
    stage.dialogs.expectBox(u"カテゴリ：ビタミンの名称を変更しますか。"_s, Answer::Ok);
    stage.dialogs.expectInput(u"ビタミン類"_s);
    stage.choose(stage.mainWindow(), u"mnuCategoryRename"_s);
    stage.guide.picture(stage.mainWindow(), u"main-new-category"_s);
    stage.dialogs.expectBox(u"<ビタミン類> を削除しますか。"_s, Answer::Ok);
    stage.choose(stage.mainWindow(), u"mnuCategoryDelete"_s);
}

void playSearches(Stage& stage)
{
    stage.guide.say(u"全文検索: かなとカナ、全角と半角の違いは問わない"_s);
    stage.choose(stage.mainWindow(), u"mnuFindName"_s);
    if (FormWindow* window = stage.lastWindow(u"frmFind"_s)) {
        stage.type(*window, u"txtFind"_s, u"ｶﾃｷﾝ"_s);
        stage.guide.picture(*window, u"search"_s);
        stage.press(*window, u"cmdFind"_s);
        stage.type(*window, u"txtFind"_s, u"覆"_s);
        stage.press(*window, u"cmdFind"_s);
        stage.picture(u"frmDataSelect"_s, u"search-result"_s);
    }

    stage.guide.say(u"すべてのリンクを見る"_s);
    stage.choose(stage.mainWindow(), u"mnuInfoLink"_s);
    stage.picture(u"frmLinkList"_s, u"link-list"_s);

    stage.guide.say(u"システムコマンドを入力する"_s);
    stage.dialogs.expectInput(u"ver"_s, u"console"_s);
    stage.dialogs.expectBox(u"System Ver.1.30 (Ver.2.00β)"_s, Answer::Ok, u"box-version"_s);
    stage.mainWindow().Form_KeyDown(Qt::Key_Escape, Qt::ShiftModifier);
}

} // namespace quillon::tour
