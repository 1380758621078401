#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/keyed_tree.h"

#include <QMenu>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void frmMainMenu::connectTree()
{
    connect(tvwCategory, &KeyedTree::nodeClicked, this,
            eventSlot(session().reporting, u"tvwCategory_NodeClick"_s, [this] { tvwCategory_NodeClick(); }));
    connect(tvwCategory, &KeyedTree::keyReleased, this, [this](int key) {
        handleEvent(session().reporting, u"tvwCategory_KeyUp"_s, [&] { tvwCategory_KeyUp(key); });
    });
    connect(tvwCategory, &KeyedTree::menuRequested, this, [this](const QPoint& position) {
        handleEvent(session().reporting, u"tvwCategory_MouseDown"_s,
                    [&] { tvwCategory_MouseDown(position); });
    });
    connect(tvwCategory, &KeyedTree::mouseMoved, this, [this] { tvwCategory_MouseMove(); });
}

void frmMainMenu::tvwCategory_NodeClick()
{
    ShowDataList();
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
        ShowDataList();
        showDataCount();
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
