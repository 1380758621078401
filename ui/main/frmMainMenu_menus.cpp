#include "app/base/ports/desktop.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/files.h"
#include "app/base/ports/windows.h"
#include "core/close_all_form.h"
#include "core/data_records.h"
#include "core/links.h"
#include "exchange/old_file.h"
#include "store/creation.h"
#include "store/opening.h"
#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/pane_hint.h"

#include <QAction>
#include <QMenu>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

const QString DatabaseFilter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s;

} // namespace

void frmMainMenu::buildMenus()
{
    QMenu* mnuFile = addMenu(u"mnuFile"_s, u"ファイル(&F)"_s);
    addEntry(mnuFile, u"mnuFileNew"_s, u"新規データベース作成(&N)"_s, &frmMainMenu::mnuFileNew_Click);
    addEntry(mnuFile, u"mnuFileOpen"_s, u"既存データベース展開(&O)"_s, &frmMainMenu::mnuFileOpen_Click);
    addLine(mnuFile, u"mnuFileLine"_s);
    addEntry(mnuFile, u"mnuEnd"_s, u"システム終了(&E)"_s, &frmMainMenu::mnuEnd_Click);

    mnuData = addMenu(u"mnuData"_s, u"データ(&D)"_s);
    QMenu* mnuEntry = addSubmenu(mnuData, u"mnuEntry"_s, u"新規データ登録(&E)"_s);
    addEntry(mnuEntry, u"mnuEntryMain"_s, u"定義データ(&M)"_s, &frmMainMenu::mnuEntryMain_Click);
    addEntry(mnuEntry, u"mnuEntryRefDoc"_s, u"文献データ(&R)"_s, &frmMainMenu::mnuEntryRefDoc_Click);
    // sic: a full-width access key
    addEntry(mnuEntry, u"mnuEntryRefFile"_s, u"ファイルデータ(&Ｆ)"_s, &frmMainMenu::mnuEntryRefFile_Click);
    addEntry(mnuData, u"mnuDataView"_s, u"データ表示(&V)"_s, &frmMainMenu::mnuDataView_Click);
    addEntry(mnuData, u"mnuDataCategoryDelete"_s, u"分類を解除(&C)"_s,
             &frmMainMenu::mnuDataCategoryDelete_Click);
    addEntry(mnuData, u"mnuDataCloseAll"_s, u"全画面を閉じる(&A)"_s, &frmMainMenu::mnuDataCloseAll_Click);
    addLine(mnuData, u"mnuDataLine"_s);
    addEntry(mnuData, u"mnuDataDelete"_s, u"データ削除(&D)"_s, &frmMainMenu::mnuDataDelete_Click);

    mnuCategory = addMenu(u"mnuCategory"_s, u"カテゴリ(&C)"_s);
    addEntry(mnuCategory, u"mnuCategoryEntry"_s, u"新規カテゴリ登録(&E)"_s,
             &frmMainMenu::mnuCategoryEntry_Click);
    addEntry(mnuCategory, u"mnuCategoryDelete"_s, u"カテゴリ削除(&D)"_s,
             &frmMainMenu::mnuCategoryDelete_Click);
    addEntry(mnuCategory, u"mnuCategoryRename"_s, u"名称変更(&R)"_s, &frmMainMenu::mnuCategoryRename_Click);

    mnuFind = addMenu(u"mnuFind"_s, u"検索(&F)"_s);
    addEntry(mnuFind, u"mnuFindName"_s, u"全文検索(&D)"_s, &frmMainMenu::mnuFindName_Click);

    mnuInfo = addMenu(u"mnuInfo"_s, u"情報(&I)"_s);
    mnuInfoLink =
        addEntry(mnuInfo, u"mnuInfoLink"_s, u"データリンク状況の表示(&L)"_s, &frmMainMenu::mnuInfoLink_Click);
    // It has no action and is never enabled.
    addEntry(mnuInfo, u"mnuInfoCategory"_s, u"データ分類状況の表示(&C)"_s)->setEnabled(false);
    mnuInfoEntry =
        addEntry(mnuInfo, u"mnuInfoEntry"_s, u"データ登録状況の表示(&E)"_s, &frmMainMenu::mnuInfoEntry_Click);
    addLine(mnuInfo, u"mnuInfoLine"_s);
    addEntry(mnuInfo, u"mnuInfoReadme"_s, u"Readme.txt (&R)"_s, &frmMainMenu::mnuInfoReadme_Click);
    addEntry(mnuInfo, u"mnuInfoRef"_s, u"機能仕様書.txt (&F)"_s, &frmMainMenu::mnuInfoRef_Click);
    addEntry(mnuInfo, u"mnuInfoSystem"_s, u"システム情報 (&S)"_s, &frmMainMenu::mnuInfoSystem_Click);

    mnuData->menuAction()->setEnabled(false);
    mnuCategory->menuAction()->setEnabled(false);
    mnuFind->menuAction()->setEnabled(false);
    mnuInfoLink->setEnabled(false);
    mnuInfoEntry->setEnabled(false);
}

void frmMainMenu::enableDatabaseMenus()
{
    mnuData->menuAction()->setEnabled(true);
    mnuCategory->menuAction()->setEnabled(true);
    mnuFind->menuAction()->setEnabled(true);
    mnuInfo->menuAction()->setEnabled(true);
    mnuInfoLink->setEnabled(true);
    mnuInfoEntry->setEnabled(true);
    // From now on the panes may be empty because there is nothing in the database.
    m_treeHint.reset();
    m_listHint.reset();
}

void frmMainMenu::mnuFileNew_Click()
{
    const QString before = dlgDbOpen.fileName;
    dlgDbOpen.folder = session().CurrentFolder;
    dlgDbOpen.fileName.clear();
    const auto chosen = session().dialogs.fileDialog({.purpose = FileDialog::Purpose::Save,
                                                      .filter = DatabaseFilter,
                                                      .fileName = dlgDbOpen.fileName,
                                                      .folder = dlgDbOpen.folder,
                                                      .promptBeforeOverwriting = true});
    dlgDbOpen.fileName = chosen.value_or(dlgDbOpen.fileName);
    if (dlgDbOpen.fileName.isEmpty())
        return;
    // Even when the dialog has asked about replacing the file already. Folders and links that lead nowhere count on
    // purpose: no database can be made under such a name either. What an abrupt end has left of a creation is finished.
    if (session().files.entryExists(dlgDbOpen.fileName) && !isUnfinishedFile(dlgDbOpen.fileName)) {
        session().dialogs.messageBox({.text = u"Quillon ではデータベースの上書き作成を承認できません。"_s,
                                      .title = titles::SystemAudit});
        return;
    }
    const Opening outcome = CreateDbFile(session(), dlgDbOpen.fileName);
    if (outcome == Opening::Opened)
        session().desktop.noteRecent(dlgDbOpen.fileName);
    else if (outcome == Opening::Declined)
        dlgDbOpen.fileName = before;
}

void frmMainMenu::mnuFileOpen_Click()
{
    const auto chosen = session().dialogs.fileDialog({.purpose = FileDialog::Purpose::Open,
                                                      .filter = DatabaseFilter,
                                                      .fileName = dlgDbOpen.fileName,
                                                      .folder = dlgDbOpen.folder,
                                                      .promptBeforeOverwriting = false});
    openChosenFile(chosen.value_or(dlgDbOpen.fileName));
}

void frmMainMenu::openChosenFile(const QString& path)
{
    const QString before = std::exchange(dlgDbOpen.fileName, path);
    // Only now: the first open dialog of a run starts in the dialog's own folder.
    dlgDbOpen.folder = session().CurrentFolder;
    if (path.isEmpty())
        return;
    if (!session().files.fileExists(path)) {
        session().dialogs.messageBox(
            {.text = u"指定されたファイルが見つかりません。"_s, .title = titles::DataResearch});
        return;
    }
    std::optional<exchange::ConvertedFile> converted;
    if (exchange::isOldFile(path)) {
        converted = convertedCopy(path);
        dlgDbOpen.fileName = converted ? converted->path : before;
        if (!converted)
            return;
    }
    const Opening outcome = openDatabase(session(), dlgDbOpen.fileName);
    if (outcome == Opening::Opened) {
        session().desktop.noteRecent(dlgDbOpen.fileName);
        ShowDataList(positionOf(FixedNode::AllData));
    } else if (outcome == Opening::Declined)
        dlgDbOpen.fileName = before;
    if (converted)
        tellWhatIsLost(*converted);
}

void frmMainMenu::mnuEnd_Click()
{
    unload();
}

void frmMainMenu::mnuEntryMain_Click()
{
    CreateRegisterForm(session(), u"M"_s);
}

void frmMainMenu::mnuEntryRefDoc_Click()
{
    CreateRegisterForm(session(), u"R"_s);
}

void frmMainMenu::mnuEntryRefFile_Click()
{
    CreateRegisterForm(session(), u"F"_s);
}

void frmMainMenu::mnuDataCloseAll_Click()
{
    CloseAllForm(session());
}

void frmMainMenu::mnuFindName_Click()
{
    session().windows.showAuxiliary(u"frmFind"_s);
}

void frmMainMenu::mnuInfoLink_Click()
{
    SetAllLinkList(session());
}

void frmMainMenu::mnuInfoEntry_Click()
{
    session().windows.showAuxiliary(u"frmEntryInfo"_s);
}

void frmMainMenu::mnuInfoReadme_Click()
{
    openTextFile(u"Readme.txt"_s, u"『Readme.txt』が見つかりませんでした。"_s);
}

void frmMainMenu::mnuInfoRef_Click()
{
    openTextFile(u"Quillon 機能仕様.txt"_s, u"『Quillon 機能仕様.txt』が見つかりませんでした。"_s);
}

void frmMainMenu::openTextFile(const QString& fileName, const QString& missing)
{
    const QString path = session().inCurrentFolder(fileName);
    if (!session().files.fileExists(path)) {
        session().dialogs.messageBox({.text = missing, .title = titles::SystemOperation});
        return;
    }
    session().desktop.open(path); // whatever comes of it
}

void frmMainMenu::mnuInfoSystem_Click()
{
    session().windows.showAuxiliary(u"frmSplash"_s);
}

} // namespace quillon
