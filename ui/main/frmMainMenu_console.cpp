#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/key_kinds.h"

#include <QKeyEvent>

#include <functional>
#include <utility>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

const QString Developer = u"Quillon 開発者 / ARDO VENTRIS"_s;
const QString PublicDisclosure = u"Quillom 情報公開部"_s; // sic: Quillom
const QString Intelligence = u"Quillon 諜報部"_s;

// sic: ENTRY/F is listed and no command; several commands are not listed.
const QString CommandList = u"<公開コマンドリスト>\r\n"
                            u"NEW        新規データベース作成\r\n"
                            u"OPEN       既存データベースの展開\r\n"
                            u"LIST       全データの表示\r\n"
                            u"LIST/M     定義データの表示\r\n"
                            u"LIST/R     文献データの表示\r\n"
                            u"LIST/F     ファイルデータの表示\r\n"
                            u"ENTRY/M    定義データの登録\r\n"
                            u"ENTRY/R    文献データの登録\r\n"
                            u"ENTRY/F    ファイルデータの登録\r\n"
                            u"INFO/L     リンク状況の表示\r\n"
                            u"INFO/E     データ登録状況の表示\r\n"
                            u"END        Quillonの終了\r\n"
                            u"VER        システムバージョンの表示\r\n"
                            u"CMDLIST    コマンドリストの表示"_s;

QString truth(bool value)
{
    return value ? u"True"_s : u"False"_s;
}

} // namespace

void frmMainMenu::keyPressEvent(QKeyEvent* event)
{
    handleEvent(session().reporting, u"Form_KeyDown"_s, [&] {
        if (!event->isAutoRepeat())
            Form_KeyDown(event->key(), event->modifiers());
    });
    FormWindow::keyPressEvent(event);
}

void frmMainMenu::Form_KeyDown(int key, Qt::KeyboardModifiers shift)
{
    // This handler's own answer to failures: nothing is logged.
    const auto onFailure = [this](const Error& error) {
        session().dialogs.messageBox(
            {.text = u"対処不能なエラーが発生しました。\r\n説明："_s + error.description});
    };
    guardedBy(onFailure, [&] {
        if (key != Qt::Key_Escape || !isShiftAlone(shift))
            return;
        const auto answer = session().dialogs.inputBox(
            {.prompt = u"システムコマンドを入力してください。\r\n本画面は基本的にデバック用の画面です。"
                       u"公開コマンドは CMDLIST で表示できます。"_s, // sic: デバック
             .title = u"システムコマンド入力画面 "_s + Developer});
        ExecSystemCommand(answer.value_or(QString()).toUpper());
    });
}

void frmMainMenu::ExecSystemCommand(const QString& command)
{
    Session& s = session();
    const auto tell = [&s](const QString& text, const QString& title) {
        s.dialogs.messageBox({.text = text, .title = title});
    };
    const auto nothing = [] {};
    const std::vector<std::pair<QString, std::function<void()>>> commands = {
        {u"PRIVATE"_s,
         [&] {
             tell(u"Quillonをプライベートモードへ移行します。"_s, Developer);
             s.PrivateMode = 1;
         }},
        {u"PUBLIC"_s,
         [&] {
             tell(u"Quillonをパブリックモードへ移行します。"_s, Developer);
             s.PrivateMode = 0;
         }},
        {u"MODE"_s,
         [&] {
             tell(s.PrivateMode == 1 ? u"現在Quillonはプライベートモードで運用中です。"_s
                                     : u"現在Quillonはパブリックモードで運用中です。"_s,
                  titles::Application);
         }},
        {u"NEW"_s, [this] { mnuFileNew_Click(); }},
        {u"OPEN"_s, [this] { mnuFileOpen_Click(); }},
        {u"LIST"_s, nothing},
        {u"LIST/M"_s, nothing},
        {u"LIST/R"_s, nothing},
        {u"LIST/F"_s, nothing},
        {u"ENTRY/M"_s, [this] { mnuEntryMain_Click(); }},
        {u"ENTRY/R"_s, [this] { mnuEntryRefDoc_Click(); }},
        {u"CADD"_s, [this] { mnuCategoryEntry_Click(); }},
        {u"CDEL"_s, [this] { mnuCategoryDelete_Click(); }},
        {u"INFO/L"_s, [this] { mnuInfoLink_Click(); }},
        {u"INFO/E"_s, [this] { mnuInfoEntry_Click(); }},
        {u"END"_s, [this] { mnuEnd_Click(); }},
        {u"VER"_s, [&] { tell(titles::Version, PublicDisclosure); }},
        {u"CMDLIST"_s, [&] { tell(CommandList, PublicDisclosure); }},
        {u"CURDIR"_s, [&] { tell(s.CurrentFolder, Intelligence); }},
        {u"LINKINFO"_s,
         [&] {
             tell(u"LINK_ID : "_s + s.LinkSourceID + u"\r\nLINK_MODE : "_s + truth(s.LinkSourceMode) +
                      u"\r\nLINK_NAME : "_s + s.LinkSourceName,
                  Intelligence);
         }},
        {u"CINFO"_s,
         [&] {
             tell(u"CATEGORY_ID : "_s + s.ChosenCategoryID + u"\r\nCATEGORY_MODE : "_s +
                      truth(s.CategoryChosen) + u"\r\nCATEGORY_NAME : "_s + s.ChosenCategoryName,
                  Intelligence);
         }},
        {u"CID"_s, [&] { tell(nodeKey(requiredNodeIndex()), titles::SystemAudit); }},
        {u"CID/COUNT"_s, [&] { tell(QString::number(nodeCount()), titles::SystemAudit); }},
        {u"CINDEX"_s, [&] { tell(QString::number(requiredNodeIndex()), titles::SystemAudit); }},
    };
    for (const auto& [word, action] : commands) {
        if (word == command) {
            action();
            return;
        }
    }
    tell(u"入力されたコマンドは無効です。"_s, titles::SystemAudit);
}

} // namespace quillon
