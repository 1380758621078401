#include "ui/data/frmMainData.h"

#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "store/data_kinds.h"
#include "store/session.h"
#include "ui/data/digit_letter_key.h"

#include <QAction>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

frmMainData::frmMainData(Session& session, WindowRegistry& registry)
    : DataForm(session, registry,
               {.kind = data_kinds::definition(),
                .title = u"定義データ画面"_s,
                .identifierLabel = u"ID :"_s,
                .contentLabel = u"定義"_s,
                .fieldToolTips = {u"データの名称(全角で25文字以内)"_s,
                                  u"データのID｡データ登録時に自動的に生成されます｡"_s,
                                  // sic: the check on saving allows more than the tool tip says.
                                  u"データの定義(全角122文字以内)"_s},
                .linkColumns = {{.header = u"リンク先データ"_s},
                                {.header = u"種別"_s, .storage = ReportModel::Storage::Dictionary},
                                {.header = u"識別符号"_s}},
                .linkToolTip = u"データのリンク先。ダブルクリックで表示できます。"_s,
                .categoryColumns = {{.header = u"分類先カテゴリ"_s},
                                    {.header = u"識別符号"_s},
                                    {.header = u"位置"_s}},
                .categoryToolTip = u"データ分類先。複数の登録も可能です。"_s,
                .modeText = titles::DisplayMode,
                .modeToolTip = {},
                .countToolTip = {},
                .updateTitle = u"定義"_s,
                .acceptsDrops = true,
                .updateClassifies = true})
{
    buildMenus();
}

void frmMainData::buildMenus()
{
    QMenu* mnuData = addMenu(u"mnuData"_s, u"データ&D)"_s); // sic: without its opening parenthesis
    addEntry(mnuData, u"mnuDataDelete"_s, u"削除(&D)"_s, &frmMainData::mnuDataDelete_Click);
    addEntry(mnuData, u"mnuDataUpdate"_s, u"更新(&U)"_s, &frmMainData::mnuDataUpdate_Click);
    addEntry(mnuData, u"mnuDataEntry"_s, u"登録(&E)"_s, &frmMainData::mnuDataEntry_Click)->setEnabled(false);
    addEntry(mnuData, u"mnuDataNoDef"_s, u"未定義登録(&N)"_s, &frmMainData::mnuDataNoDef_Click)
        ->setEnabled(false);
    addLine(mnuData, u"mnuDataLine"_s);
    addEntry(mnuData, u"mnuDataChange"_s, u"画面の切り替え(&F2)"_s, &frmMainData::mnuDataChange_Click);
    addEntry(mnuData, u"mnuDataCloseAll"_s, u"全画面を閉じる(&A)"_s, &frmMainData::mnuDataCloseAll_Click);
    addLine(mnuData, u"mnuDataLine2"_s);
    addEntry(mnuData, u"mnuDataClose"_s, u"本画面を閉じる(&C)"_s, &frmMainData::mnuDataClose_Click);

    addRelationMenus({.categoryEntryCaption = u"カテゴリに分類(&E)"_s, .linkCategoryEntry = true});
}

void frmMainData::setMode(FormMode mode)
{
    DataForm::setMode(mode);
    action(u"mnuDataNoDef"_s)->setEnabled(mode == FormMode::Registration);
}

bool frmMainData::warnsOnKey(const QKeyEvent& event) const
{
    return isDigitOrLetterKey(event);
}

bool frmMainData::RegisterData()
{
    const auto saved = registerShownDatum();
    if (!saved) {
        m_saveResult = false;
        return false;
    }
    saved->messages.show(session());
    setMode(FormMode::Display);
    if (!m_saveResult)
        session().dialogs.messageBox({.text = u"本データを登録しました。"_s});
    m_saveResult = true;
    return true;
}

void frmMainData::mnuDataNoDef_Click()
{
    const Answer answer = session().dialogs.messageBox(
        {.text = u"未定義登録を行いますか。"_s, .title = u"定義"_s, .buttons = Buttons::OkCancel});
    if (answer != Answer::Ok)
        return;
    replaceFieldText(2, titles::Undefined);
    if (!CheckInput())
        return;
    m_saveResult = true; // keeps the ordinary notice of a registration away
    if (!RegisterData())
        return;
    session().dialogs.messageBox({.text = u"未定義登録を行いました。"_s, .title = u"定義"_s});
}

} // namespace quillon
