#include "ui/auxiliary/frmCategory.h"

#include "app/base/error.h"
#include "app/base/ports/dialogs.h"
#include "store/session.h"
#include "ui/widgets/button_row.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/keyed_tree.h"

#include <QBoxLayout>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int Root = 1; // the position of the node that stands for no category

} // namespace

frmCategory::frmCategory(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmCategory"_s)
{
    setWindowTitle(u"カテゴリ選択画面"_s);
    arrange();
    connect(tvwCategory, &KeyedTree::keyPressed, this, [this](int key) {
        handleEvent(this->session().reporting, u"tvwCategory_KeyDown"_s, [&] { tvwCategory_KeyDown(key); });
    });
    connect(tvwCategory, &KeyedTree::keyReleased, this, [this](int key) {
        handleEvent(this->session().reporting, u"tvwCategory_KeyUp"_s, [&] { tvwCategory_KeyUp(key); });
    });
}

void frmCategory::arrange()
{
    auto* middle = new QWidget(this);
    auto* rows = new QVBoxLayout(middle);
    tvwCategory = new KeyedTree(middle);
    tvwCategory->setObjectName(u"tvwCategory"_s);
    tvwCategory->setAccessibleName(u"カテゴリツリー"_s);
    tvwCategory->setAcceptDrops(false);
    rows->addWidget(tvwCategory, 1);

    auto* buttons = new ButtonRow;
    QPushButton* cmdOK = addButton(middle, u"cmdOK"_s, u"OK(&O)"_s, &frmCategory::cmdOK_Click);
    QPushButton* cmdCancel =
        addButton(middle, u"cmdCancel"_s, u"Cancel(&C)"_s, &frmCategory::cmdCancel_Click);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    setTabOrder(tvwCategory, cmdOK);
    setTabOrder(cmdOK, cmdCancel);
    setContents(middle, buttons);
    tvwCategory->setFocus();
    resize(sizeHint().expandedTo({360, 420}));
    openOverMainWindow();
}

void frmCategory::setNodes(const std::vector<ChooserNode>& nodes)
{
    KeyedTreeModel& tree = tvwCategory->nodes();
    {
        const KeyedTreeModel::Rebuild rebuild(tree);
        tree.clear();
        for (const ChooserNode& node : nodes)
            tree.add(node.parentKey, node.key, node.text);
    }
    if (!nodes.empty())
        tvwCategory->select(Root);
}

void frmCategory::expandNode(int position)
{
    if (position < 1 || position > tvwCategory->nodes().nodeCount())
        throw Error(errors::IndexOutOfBounds);
    tvwCategory->expandNode(position);
}

void frmCategory::tvwCategory_KeyDown(int key)
{
    if (key == Qt::Key_Escape)
        cmdCancel_Click();
}

void frmCategory::tvwCategory_KeyUp(int key)
{
    // On the release: while Enter is held down, a box that it closes would come again and again.
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        cmdOK_Click();
}

void frmCategory::cmdOK_Click()
{
    const int selected = tvwCategory->selectedPosition();
    if (selected <= Root) {
        session().dialogs.messageBox({.text = u"カテゴリを選択して下さい。"_s});
        return;
    }
    session().CategoryChosen = true;
    session().ChosenCategoryID = tvwCategory->nodes().key(selected);
    session().ChosenCategoryName = tvwCategory->nodes().text(selected);
    unload();
}

void frmCategory::cmdCancel_Click()
{
    session().CategoryChosen = false;
    unload();
}

} // namespace quillon
