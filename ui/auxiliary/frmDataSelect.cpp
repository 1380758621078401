#include "ui/auxiliary/frmDataSelect.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "core/data_records.h"
#include "core/datum_place.h"
#include "core/links.h"
#include "store/data_kinds.h"
#include "store/session.h"
#include "ui/widgets/button_row.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QBoxLayout>
#include <QMenu>
#include <QPushButton>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int IdentifierColumn = 2;
constexpr int SearchedColumn = 4;

class DataRows : public DataRowFill
{
public:
    DataRows(ReportModel& rows, QString searched) : m_fill(rows), m_searched(std::move(searched)) {}
    void append(QStringView name, QStringView kind, QStringView identifier) override
    {
        m_fill.append({name, kind, identifier, {}, m_searched});
    }
    void finish() override { m_fill.finish(); }

private:
    ReportModel::Fill m_fill;
    QString m_searched;
};

} // namespace

frmDataSelect::frmDataSelect(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmDataSelect"_s)
{
    setWindowTitle(u"データ選択画面"_s);
    buildMenus();
    arrange();
    connectList();
}

void frmDataSelect::buildMenus()
{
    QMenu* mnuOpe = addMenu(u"mnuOpe"_s, u"データ(&D)"_s);
    addEntry(mnuOpe, u"mnuView"_s, u"表示(&V)"_s, &frmDataSelect::cmdOK_Click);
    addEntry(mnuOpe, u"mnuDelete"_s, u"削除(&F)"_s, &frmDataSelect::mnuDelete_Click);
    addEntry(mnuOpe, u"mnuClose"_s, u"閉じる(&C)"_s, &frmDataSelect::cmdCancel_Click);
}

void frmDataSelect::arrange()
{
    auto* middle = new QWidget(this);
    auto* rows = new QVBoxLayout(middle);

    lsvData = new ReportList(session().reporting,
                             {{.header = u"名称"_s},
                              {.header = u"種別"_s, .storage = ReportModel::Storage::Dictionary},
                              {.header = u"ＩＤ"_s},
                              {.header = u"下位分類"_s, .storage = ReportModel::Storage::Dictionary},
                              // The results of one search stand below those of another.
                              {.header = {}, .storage = ReportModel::Storage::Dictionary, .isShown = false}},
                             middle);
    lsvData->setObjectName(u"lsvData"_s);
    lsvData->setAccessibleName(u"データ一覧"_s);
    lsvData->setColumnCharacters({36, 8, 16, 10});
    lsvData->giveRoomTo({0});
    lsvData->setSelectionMode(QAbstractItemView::SingleSelection);
    rows->addWidget(lsvData, 1);

    auto* buttons = new ButtonRow;
    QPushButton* cmdOK = addButton(middle, u"cmdOK"_s, u"OK"_s, &frmDataSelect::cmdOK_Click);
    QPushButton* cmdCancel = addButton(middle, u"cmdCancel"_s, u"Cancel"_s, &frmDataSelect::cmdCancel_Click);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    setTabOrder(lsvData, cmdOK);
    setTabOrder(cmdOK, cmdCancel);
    setContents(middle, buttons);

    const int modeWidth = fontMetrics().horizontalAdvance(u"リンクモード"_s) * 2;
    sbStatus = new StatusPanels({{.objectName = {},
                                  .width = modeWidth,
                                  .text = {},
                                  .toolTip = u"現在の情報選択画面のモードを表示します。"_s},
                                 {.objectName = {}, .text = {}, .toolTip = {}, .stretches = true},
                                 {.objectName = {},
                                  .width = 2 * modeWidth,
                                  .text = {},
                                  .toolTip = u"表示されている情報数を表示します。"_s}},
                                this);
    sbStatus->setObjectName(u"sbStatus"_s);
    setStatusBar(sbStatus);
    lsvData->setFocus();
    resize(sizeHint().expandedTo({640, 420}));
}

void frmDataSelect::connectList()
{
    lsvData->rows().setDragColumn(IdentifierColumn);
    connect(lsvData, &ReportList::rowDoubleClicked, this,
            eventSlot(session().reporting, u"lsvData_DblClick"_s, [this] { cmdOK_Click(); }));
    connect(lsvData, &ReportList::keyReleased, this, [this](int key) {
        handleEvent(session().reporting, u"lsvData_KeyUp"_s, [&] { lsvData_KeyUp(key); });
    });
}

void frmDataSelect::clearRows()
{
    lsvData->rows().clear();
}

std::unique_ptr<DataRowFill> frmDataSelect::fillRows(const QString& searched)
{
    return std::make_unique<DataRows>(lsvData->rows(), searched);
}

void frmDataSelect::setStatus(int panel, const QString& text)
{
    sbStatus->setText(panel, text);
}

int frmDataSelect::rowToActOn()
{
    const int row = lsvData->selectedRow();
    if (row < 0)
        session().dialogs.messageBox(
            {.text = u"データが選択されていません。"_s, .title = titles::SystemOperation});
    return row;
}

void frmDataSelect::cmdOK_Click()
{
    const int row = rowToActOn();
    if (row < 0)
        return;
    const QString identifier = lsvData->rows().text(row, IdentifierColumn).toString();
    if (!session().LinkSourceMode)
        showFound(identifier, lsvData->rows().text(row, SearchedColumn).toString());
    else if (linkTo(identifier))
        unload();
}

bool frmDataSelect::linkTo(const QString& identifier)
{
    // The identifier of the datum for which the choice goes on may have been given to another one meanwhile.
    const QString source = session().LinkSourceID;
    if (const DataWindow* const window = session().LinkSourceForm;
        window != nullptr && kindOf(source) != nullptr)
        requireDatum(session(), {.kind = kindOf(source),
                                 .databaseFile = window->row().databaseFile,
                                 .identifier = source,
                                 .row = window->row().number});
    return LinkData(session(), identifier, source, 1);
}

void frmDataSelect::showFound(const QString& identifier, const QString& searched)
{
    ShowData(session(), identifier);
    if (searched.isEmpty())
        return;
    const auto loaded = session().windows.loaded();
    for (LoadedWindow* window : loaded) {
        DataWindow* const shown = window->asDataWindow();
        if (shown != nullptr && shown->row().number != 0 && shown->fieldText(1) == identifier)
            shown->showPlaceOf(searched);
    }
}

void frmDataSelect::mnuDelete_Click()
{
    const int row = rowToActOn();
    if (row < 0)
        return;
    const QString identifier = lsvData->rows().text(row, IdentifierColumn).toString();
    if (DeleteDatum(session(), identifier, 1) == Deletion::Kept)
        return;
    const int count = lsvData->rows().rowCount();
    lsvData->rows().removeRowsAt({row});
    setStatus(3, u"表示データ数："_s + QString::number(count - 1));
}

void frmDataSelect::cmdCancel_Click()
{
    unload();
}

void frmDataSelect::lsvData_KeyUp(int key)
{
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        cmdOK_Click();
    else if (key == Qt::Key_Delete)
        mnuDelete_Click();
    else if (key == Qt::Key_Escape)
        unload();
}

} // namespace quillon
