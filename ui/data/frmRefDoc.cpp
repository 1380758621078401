#include "ui/data/frmRefDoc.h"

#include "app/base/ports/dialogs.h"
#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "app/base/twips.h"
#include "core/text_loading.h"
#include "store/data_kinds.h"
#include "store/session.h"

#include <QAction>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QPushButton>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr double LeastWidth = 7000;  // twips
constexpr double LeastHeight = 7000; // twips

} // namespace

frmRefDoc::frmRefDoc(Session& session, WindowRegistry& registry)
    : DataForm(session, registry,
               {.kind = data_kinds::document(),
                .title = u"文献データ画面"_s,
                .identifierLabel = u"ID:"_s,
                .contentLabel = u"文献"_s,
                // sic: the tool tip, the remaining count and the check on saving have three different limits.
                .fieldToolTips = {u"文献の名称。最大入力数は全角で25文字です。"_s,
                                  u"情報の認識符号｡情報登録時に自動的に生成されます｡"_s,
                                  u"文献の内容。最大入力数は全角で32,768文字です。"_s},
                .linkColumns = {{.header = u"リンク先名称"_s},
                                {.header = u"形式"_s, .storage = ReportModel::Storage::Dictionary},
                                {.header = u"ＩＤ"_s}},
                .linkToolTip = u"データのリンク先。ダブルクリックで表示できます。"_s,
                .categoryColumns = {{.header = u"分類先カテゴリ名"_s},
                                    {.header = u"カテゴリID"_s},
                                    {.header = u"位置"_s}},
                .categoryToolTip = u"データの分類先。複数の登録も可能です。"_s,
                .modeText = u"ステータス"_s,
                .modeToolTip = u"現在の文献データ画面のステータスを表示します。"_s,
                .countToolTip = u"入力可能文字数を表示します。"_s,
                .updateTitle = titles::DocumentData})
{
    buildMenus();
    buildSizeButtons();
    keepAtLeast(LeastWidth, LeastHeight);
}

void frmRefDoc::buildMenus()
{
    QMenu* mnuOpe = addMenu(u"mnuOpe"_s, u"データ(&D)"_s);
    addEntry(mnuOpe, u"mnuDataEntry"_s, u"登録(&E)"_s, &frmRefDoc::mnuDataEntry_Click)->setEnabled(false);
    addEntry(mnuOpe, u"mnuDataUpdate"_s, u"更新(&U)"_s, &frmRefDoc::mnuDataUpdate_Click);
    addEntry(mnuOpe, u"mnuDataDelete"_s, u"削除(&D)"_s, &frmRefDoc::mnuDataDelete_Click);
    addEntry(mnuOpe, u"mnuDataLoadText"_s, u"テキストファイルの読込(&T)"_s,
             &frmRefDoc::mnuDataLoadText_Click);
    addLine(mnuOpe, u"mnuDataLine"_s);
    addEntry(mnuOpe, u"mnuDataChange"_s, u"画面の切り替え(&F2)"_s, &frmRefDoc::mnuDataChange_Click);
    addEntry(mnuOpe, u"mnuDataCloseAll"_s, u"全画面を閉じる(&A)"_s, &frmRefDoc::mnuDataCloseAll_Click);
    addLine(mnuOpe, u"mnuDataLine2"_s);
    addEntry(mnuOpe, u"mnuDataClose"_s, u"本画面を閉じる(&C)"_s, &frmRefDoc::mnuDataClose_Click);

    addRelationMenus({.categoryEntryCaption = u"カテゴリに分類(&A)"_s});
}

void frmRefDoc::buildSizeButtons()
{
    struct Size {
        QString caption;
        int points;
    };
    const std::array<Size, 3> sizes = {{{u"12(&L)"_s, 12}, {u"10(&N)"_s, 10}, {u"9(&S)"_s, 9}}};
    QWidget* before = &fieldWidget(1);
    int index = 0;
    for (const Size& size : sizes) {
        QPushButton* button = addButton(this, u"cmdSize(%1)"_s.arg(index++), size.caption,
                                        [this, points = size.points] { cmdSize_Click(points); });
        button->setAutoDefault(false);
        button->setAccessibleDescription(u"内容の文字の大きさを%1ポイントにします。"_s.arg(size.points));
        contentLabelRow().addWidget(button);
        setTabOrder(before, button);
        before = button;
    }
    setTabOrder(before, &fieldWidget(2));
}

void frmRefDoc::setMode(FormMode mode)
{
    DataForm::setMode(mode);
    // sic: display mode leaves it as it is, so that texts can be loaded into a shown document too.
    if (mode == FormMode::Registration)
        action(u"mnuDataLoadText"_s)->setEnabled(true);
}

bool frmRefDoc::warnsOnKey(const QKeyEvent&) const
{
    return true;
}

bool frmRefDoc::RegisterData()
{
    const auto saved = registerShownDatum();
    if (!saved) {
        m_saveResult = false;
        return false;
    }
    m_saveResult = true;
    setMode(FormMode::Display);
    saved->messages.show(session());
    return true;
}

void frmRefDoc::mnuDataLoadText_Click()
{
    const auto chosen = session().dialogs.fileDialog({.purpose = FileDialog::Purpose::Open,
                                                      .filter = u"ﾃｷｽﾄﾌｧｲﾙ (*.txt)|*.txt"_s,
                                                      .fileName = m_chosenPath,
                                                      .folder = {},
                                                      .promptBeforeOverwriting = false});
    // A cancelled dialog leaves the last name, whose file is then loaded again.
    m_chosenPath = chosen.value_or(m_chosenPath);
    if (m_chosenPath.isEmpty() || !session().files.entryExists(m_chosenPath))
        return;
    replaceFieldText(2, loadText(session().files, m_chosenPath, data_kinds::document()));
}

void frmRefDoc::cmdSize_Click(int points)
{
    QWidget& content = fieldWidget(2);
    QFont font = content.font();
    font.setPointSize(points);
    content.setFont(font);
}

} // namespace quillon
