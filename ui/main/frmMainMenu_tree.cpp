#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QMenu>

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
    connect(tvwCategory, &KeyedTree::pasteRequested, this,
            eventSlot(session().reporting, u"tvwCategory_Paste"_s, [this] { tvwCategory_Paste(); }));
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

void frmMainMenu::tvwCategory_MouseMove()
{
    setStatus(1, u"右クリックでカテゴリを追加できます。"_s);
}

} // namespace quillon
