#include "app/base/ports/dialogs.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "store/session.h"
#include "ui/main/category_tree.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

std::optional<QString> frmMainMenu::storeTypedName(InputBox box, const QString& nameMissing,
                                                   const std::function<void(const QString&)>& store,
                                                   const std::function<void(const Error&)>& tell)
{
    for (bool stored = false; !stored;) {
        box.content = session().dialogs.inputBox(box).value_or(QString());
        if (box.content.isEmpty()) {
            session().dialogs.messageBox({.text = nameMissing});
            return std::nullopt;
        }
        const auto onFailure = [&](const Error& error) {
            if (error.number == errors::NoCurrentRecord)
                throw error; // there is nothing any more that could bear the name
            tell(error);
        };
        guardedBy(onFailure, [&] {
            store(box.content);
            stored = true;
        });
    }
    return box.content;
}

void frmMainMenu::mnuCategoryEntry_Click()
{
    const QString location = u"mnuCategoryEntry_Click"_s;
    guarded(session().reporting, location, [&] {
        const int selected = requiredNodeIndex();
        // Below the data by kind, too, a new category is one of the top level.
        const bool topLevel = selected <= LastFixedNode;
        const QString parentKey = topLevel ? keyOf(FixedNode::Categories).toString() : nodeKey(selected);
        const std::optional<CategoryRow> parent =
            topLevel ? std::nullopt : std::optional(presentCategory(session(), parentKey));
        const QString question = topLevel ? u"新規にカテゴリを登録しますか。"_s
                                          : parent->name + u"の下に新規のカテゴリを登録しますか。"_s;
        if (session().dialogs.messageBox({.text = question, .buttons = Buttons::OkCancel}) != Answer::Ok)
            return;
        GetNewCategory_ID(parentKey, topLevel); // without a free one there is nothing to ask
        QString identifier;
        const QString prompt = u"カテゴリ名を入力してください。"_s;
        const auto name = storeTypedName(
            {.prompt = prompt}, prompt,
            [&](const QString& typed) {
                identifier = RegisterNewCategory(
                    session(), topLevel ? QString() : parentKey + u'-',
                    [&](const QString& key) { return GetNodeIndex(tvwCategory->nodes(), key) != 0; }, typed,
                    parent ? &*parent : nullptr);
            },
            [&](const Error& error) { ReportError(session().reporting, error.number, location); });
        if (!name)
            return;
        tvwCategory->nodes().add(parentKey, identifier, *name);
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
    const CategoryRow category = presentCategory(session(), nodeKey(selected));
    const Answer answer =
        session().dialogs.messageBox({.text = u"カテゴリ："_s + category.name + u"の名称を変更しますか。"_s,
                                      .buttons = Buttons::OkCancel});
    if (answer != Answer::Ok)
        return;
    const auto name = storeTypedName(
        {.prompt = u"新しいカテゴリ名を入力して下さい。"_s, .content = category.name},
        u"カテゴリ名が入力されていません。"_s,
        [&](const QString& typed) { RenameCategory(session(), category, typed); },
        [&](const Error& error) {
            reportUntrapped(session().reporting, error, u"mnuCategoryRename_Click"_s);
        });
    if (name)
        tvwCategory->nodes().setText(selected, *name);
}

void frmMainMenu::mnuCategoryDelete_Click()
{
    const int selected = requiredNodeIndex();
    if (selected <= LastFixedNode) {
        session().dialogs.messageBox({.text = u"カテゴリが選択されていません。"_s});
        return;
    }
    const QString key = nodeKey(selected);
    // Another program may have registered some that this tree does not show.
    if (tvwCategory->nodes().hasChildren(selected) || HasSubcategories(session(), key)) {
        session().dialogs.messageBox(
            {.text = u"サブカテゴリが存在します。先にサブカテゴリを削除して下さい。"_s});
        return;
    }
    if (!DeleteCategory(session(), key, 1))
        return;
    tvwCategory->nodes().remove(selected);
    // The list stays, but as that of no category: the next one with this key is another.
    if (key == m_listed.identifier)
        m_listed = {};
}

} // namespace quillon
