#include "app/base/ports/dialogs.h"
#include "core/data_records.h"
#include "store/filter_result.h"
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

void frmMainMenu::ShowDataList()
{
    if (!treeHasNodes())
        return;
    Session& s = session();
    const int selected = selectedNodeIndex();
    const QString key = selected > 0 ? nodeKey(selected) : QString();
    if (selected == 0) {
        lsvData->rows().clear();
    } else if (key == u"DIV") {
        listAllData();
    } else if (key == u"M_DIV") {
        m_filler->CreateDataListMain(s.RsMain, false, {});
    } else if (key == u"R_DIV") {
        m_filler->CreateDataListMain(s.RsRefDoc, false, {});
    } else if (key == u"F_DIV") {
        m_filler->CreateDataListMain(s.RsRefFile, false, {});
    } else if (key == u"M_DIV_NOCATEGORY") {
        m_filler->ShowUncategorisedList(s.RsMain);
    } else if (key == u"R_DIV_NOCATEGORY") {
        m_filler->ShowUncategorisedList(s.RsRefDoc);
    } else if (key == u"F_DIV_NOCATEGORY") {
        m_filler->ShowUncategorisedList(s.RsRefFile);
    } else if (key == u"M_DIV_NODIF") {
        const auto rows = GetFilterResult(s.reporting, s.RsMain, u"Explanation = '未定義'"_s);
        lsvData->rows().clear();
        m_filler->FillListFromRows(rows, {});
    } else if (key == u"CATEGORY") {
        lsvData->rows().clear();
    } else {
        lsvData->rows().clear();
        auto rows = GetFilterResult(s.reporting, s.RsCategory, u"Category_ID = '"_s + key + u"'"_s);
        m_filler->FillListFromRows(rows, u"NO"_s);
        rows = GetFilterResult(s.reporting, s.RsCategory, u"Category_ID Like '"_s + key + u"-*'"_s);
        m_filler->FillListFromRows(rows, u"YES"_s);
    }
    showDataCount();
}

void frmMainMenu::listAllData()
{
    m_filler->CreateDataListMain(session().RsMain, false, {});
    m_filler->CreateDataListMain(session().RsRefDoc, true, {});
    m_filler->CreateDataListMain(session().RsRefFile, true, {});
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
