#include "app/base/ports/dialogs.h"
#include "core/category_entry.h"
#include "core/data_records.h"
#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/key_kinds.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QMenu>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void frmMainMenu::connectList()
{
    lsvData->rows().setDragColumn(IdentifierColumn);
    connect(lsvData, &ReportList::keyPressed, this, [this](int key, Qt::KeyboardModifiers shift) {
        handleEvent(session().reporting, u"lsvData_KeyDown"_s, [&] { lsvData_KeyDown(key, shift); });
    });
    connect(lsvData, &ReportList::enterPressed, this,
            eventSlot(session().reporting, u"lsvData_KeyDown"_s,
                      [this] { lsvData_KeyDown(Qt::Key_Return, Qt::NoModifier); }));
    connect(lsvData, &ReportList::listDoubleClicked, this,
            eventSlot(session().reporting, u"lsvData_DblClick"_s, [this] { lsvData_DblClick(); }));
    connect(lsvData, &ReportList::menuRequested, this, [this](const QPoint& position) {
        handleEvent(session().reporting, u"lsvData_MouseDown"_s, [&] { lsvData_MouseDown(position); });
    });
    connect(lsvData, &ReportList::mouseMoved, this, [this] { lsvData_MouseMove(); });
}

void frmMainMenu::ShowDataList(int node)
{
    if (!treeHasNodes())
        return;
    m_listed = {.name = {}, .identifier = node == 0 ? QString() : nodeKey(node)};
    if (node > LastFixedNode) {
        m_listed = listedCategory(session(), nodeText(node), m_listed.identifier);
        m_filler->ShowCategory(m_listed.identifier);
    } else {
        m_filler->ShowFixedNode(static_cast<FixedNode>(node));
    }
    showDataCount();
}

void frmMainMenu::showDataCount()
{
    setStatus(2, u"表示データ数 ： "_s + QString::number(lsvData->rows().rowCount()));
}

bool frmMainMenu::CheckMultiSelect() const
{
    return lsvData->moreThanOneSelected();
}

void frmMainMenu::lsvData_KeyDown(int key, Qt::KeyboardModifiers shift)
{
    if (!treeHasNodes())
        return;
    if (key == Qt::Key_Insert && isShiftAlone(shift))
        mnuEntryRefDoc_Click();
    else if (key == Qt::Key_Insert)
        mnuEntryMain_Click();
    else if (key == Qt::Key_Return)
        mnuDataView_Click();
    else if (key == Qt::Key_Delete)
        mnuDataDelete_Click();
}

void frmMainMenu::lsvData_MouseDown(const QPoint& position)
{
    if (treeHasNodes())
        mnuData->popup(position);
}

void frmMainMenu::lsvData_MouseMove()
{
    setStatus(1, u"ドラック＆ドロップでデータをカテゴリに登録できます。"_s); // sic: ドラック
}

void frmMainMenu::lsvData_DblClick()
{
    mnuDataView_Click();
}

} // namespace quillon
