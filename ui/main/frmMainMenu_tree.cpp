#include "app/base/ports/dialogs.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "store/identifiers.h"
#include "store/session.h"
#include "ui/main/category_tree.h"
#include "ui/main/fill_progress.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QMenu>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void frmMainMenu::connectTree()
{
    connect(tvwCategory, &KeyedTree::nodeClicked, this, [this](int node) {
        handleEvent(session().reporting, u"tvwCategory_NodeClick"_s, [&] { tvwCategory_NodeClick(node); });
    });
    connect(tvwCategory, &KeyedTree::nodeChosen, this, [this](int node) {
        handleEvent(session().reporting, u"tvwCategory_NodeClick"_s, [&] {
            if (nodeKey(node) != m_listed.identifier) // a key may have listed it already
                tvwCategory_NodeClick(node);
        });
    });
    connect(tvwCategory, &KeyedTree::keyReleased, this, [this](int key) {
        handleEvent(session().reporting, u"tvwCategory_KeyUp"_s, [&] { tvwCategory_KeyUp(key); });
    });
    connect(tvwCategory, &KeyedTree::menuRequested, this, [this](const QPoint& position) {
        handleEvent(session().reporting, u"tvwCategory_MouseDown"_s,
                    [&] { tvwCategory_MouseDown(position); });
    });
    connect(tvwCategory, &KeyedTree::mouseMoved, this, [this] { tvwCategory_MouseMove(); });
    connect(tvwCategory, &KeyedTree::textDropped, this, [this](const QString& text) {
        handleEvent(session().reporting, u"tvwCategory_OLEDragDrop"_s,
                    [&] { tvwCategory_OLEDragDrop(text); });
    });
}

void frmMainMenu::tvwCategory_NodeClick(int node)
{
    ShowDataList(node);
}

void frmMainMenu::tvwCategory_KeyUp(int key)
{
    if (!treeHasNodes())
        return;
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_Right:
    case Qt::Key_Down:
    case Qt::Key_Space:
    case Qt::Key_End:
    case Qt::Key_Home:
        ShowDataList(selectedNodeIndex());
        break;
    case Qt::Key_Delete:
        mnuCategoryDelete_Click();
        break;
    case Qt::Key_Insert:
        mnuCategoryEntry_Click();
        break;
    default:
        break;
    }
}

void frmMainMenu::tvwCategory_MouseDown(const QPoint& position)
{
    if (treeHasNodes())
        mnuCategory->popup(position);
}

void frmMainMenu::tvwCategory_OLEDragDrop(const QString& text)
{
    // sic: it reports under the name of deleting.
    guarded(session().reporting, u"DeleteData"_s, [&] {
        const int target = tvwCategory->dropHighlight();
        if (target <= LastFixedNode) {
            session().dialogs.messageBox({.text = u"選択された項目はカテゴリではありません｡"_s});
            return;
        }
        if (text.size() != IdentifierLength)
            return;
        const CategoryRow category = presentCategory(session(), nodeKey(target));
        // What is dropped may come from another list; then it is alone, whatever is selected in this one.
        std::vector<int> rows = lsvData->selectedRows();
        const bool isSelected = std::any_of(rows.begin(), rows.end(), [&](int row) {
            return lsvData->rows().text(row, IdentifierColumn) == text;
        });
        if (!isSelected)
            rows.clear();
        const bool several = rows.size() > 1;
        std::vector<ListedDatum> dropped = dataIn(rows);
        if (!several) {
            const auto present = presentDatum(session(), text);
            if (!present)
                return;
            dropped = {*present};
        }
        const QString question =
            several ? u"選択された複数のデータを [ "_s + category.name + u" ] に分類してもよろしいですか。"_s
                    : u"[ "_s + dropped.front().name + u" ] を[ "_s + category.name +
                          u" ]へ分類してもよろしいですか"_s; // sic: without a full stop
        if (session().dialogs.messageBox({.text = question, .buttons = Buttons::OkCancel}) != Answer::Ok)
            return;
        classify(dropped, rows, category);
    });
    tvwCategory->setDropHighlight(0);
}

void frmMainMenu::classify(const std::vector<ListedDatum>& listed, const std::vector<int>& rows,
                           const CategoryRow& category)
{
    std::vector<std::size_t> gone;
    {
        const FillProgress::Showing showing(*m_progress, static_cast<qint64>(listed.size()));
        gone = ClassifyManyData(session(), category, listed, [this] { m_progress->advance(); });
    }
    std::vector<int> rowsGone;
    for (const std::size_t i : gone) {
        if (i < rows.size())
            rowsGone.push_back(rows[i]);
    }
    lsvData->rows().removeRowsAt(std::move(rowsGone));
}

void frmMainMenu::tvwCategory_MouseMove()
{
    setStatus(1, u"右クリックでカテゴリを追加できます。"_s);
}

} // namespace quillon
