#include "app/base/ports/dialogs.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void frmMainMenu::mnuCategoryEntry_Click()
{
    guarded(session().reporting, u"mnuCategoryEntry_Click"_s, [&] {
        const int selected = requiredNodeIndex();
        // Below the data by kind, too, a new category is one of the top level.
        const bool topLevel = selected <= LastFixedNode;
        const QString parentKey = topLevel ? keyOf(FixedNode::Categories).toString() : nodeKey(selected);
        const QString question = topLevel ? u"新規にカテゴリを登録しますか。"_s
                                          : nodeText(selected) + u"の下に新規のカテゴリを登録しますか。"_s;
        if (session().dialogs.messageBox({.text = question, .buttons = Buttons::OkCancel}) != Answer::Ok)
            return;
        const QString prompt = u"カテゴリ名を入力してください。"_s;
        const QString name = session().dialogs.inputBox({.prompt = prompt}).value_or(QString());
        if (name.isEmpty()) {
            session().dialogs.messageBox({.text = prompt});
            return;
        }
        const QString identifier = GetNewCategory_ID(parentKey, topLevel);
        RegisterCategory(session(), identifier, name);
        tvwCategory->nodes().add(parentKey, identifier, name);
        tvwCategory->expandNode(selected);
    });
}

void frmMainMenu::mnuCategoryRename_Click()
{
    const int selected = requiredNodeIndex();
    if (selected <= LastFixedNode) {
        session().dialogs.messageBox({.text = u"指定された項目はカテゴリではありません。"_s});
        return;
    }
    const QString key = nodeKey(selected);
    const QString text = nodeText(selected);
    const Answer answer = session().dialogs.messageBox(
        {.text = u"カテゴリ："_s + text + u"の名称を変更しますか。"_s, .buttons = Buttons::OkCancel});
    if (answer != Answer::Ok)
        return;
    const QString name =
        session()
            .dialogs.inputBox({.prompt = u"新しいカテゴリ名を入力して下さい。"_s, .content = text})
            .value_or(QString());
    if (name.isEmpty()) {
        session().dialogs.messageBox({.text = u"カテゴリ名が入力されていません。"_s});
        return;
    }
    RenameCategory(session(), key, name);
    tvwCategory->nodes().setText(selected, name);
}

void frmMainMenu::mnuCategoryDelete_Click()
{
    const int selected = requiredNodeIndex();
    if (selected <= LastFixedNode) {
        session().dialogs.messageBox({.text = u"カテゴリが選択されていません。"_s});
        return;
    }
    if (tvwCategory->nodes().hasChildren(selected)) {
        session().dialogs.messageBox(
            {.text = u"サブカテゴリが存在します。先にサブカテゴリを削除して下さい。"_s});
        return;
    }
    const QString key = nodeKey(selected);
    if (!DeleteCategory(session(), key, 1))
        return;
    tvwCategory->nodes().remove(selected);
    // The list stays, but as that of no category: the next one with this key is another.
    if (key == m_listedNode)
        m_listedNode.clear();
}

} // namespace quillon
