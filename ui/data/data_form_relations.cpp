#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/data_records.h"
#include "core/data_selection.h"
#include "core/file_data.h"
#include "core/links.h"
#include "store/identifiers.h"
#include "store/session.h"
#include "ui/data/data_form.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/report_list.h"

#include <QMenu>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int LinkNameColumn = 0;
constexpr int LinkIdentifierColumn = 2;

} // namespace

void DataForm::addRelationMenus(const RelationEntries& entries)
{
    QMenu* mnuLink = addMenu(u"mnuLink"_s, u"リンク(&L)"_s);
    addEntry(mnuLink, u"mnuLinkMain"_s, u"定義データ(&M)"_s, [this] { linkToChosen(session().RsMain); });
    addEntry(mnuLink, u"mnuLinkRefDoc"_s, u"文献データ(&R)"_s, [this] { linkToChosen(session().RsRefDoc); });
    addEntry(mnuLink, u"mnuLinkRefFile"_s, u"ファイルデータ(&F)"_s, &DataForm::mnuLinkRefFile_Click);
    if (entries.linkCategoryEntry)
        addEntry(mnuLink, u"mnuLinkCategory"_s, u"分類先を指定"_s); // does nothing
    addLine(mnuLink, u"mnuLinkLine"_s);
    addEntry(mnuLink, u"mnuLinkView"_s, u"リンク先表示(&V)"_s, &DataForm::mnuLinkView_Click);
    addEntry(mnuLink, u"mnuLinkDelete"_s, u"リンク削除(&D)"_s, &DataForm::mnuLinkDelete_Click);

    QMenu* mnuCategory = addMenu(u"mnuCategory"_s, u"分類(&C)"_s);
    addEntry(mnuCategory, u"mnuCategoryEntry"_s, entries.categoryEntryCaption,
             &DataForm::mnuCategoryEntry_Click);
    addEntry(mnuCategory, u"mnuCategoryDelete"_s, u"分類を解除(&D)"_s, &DataForm::mnuCategoryDelete_Click);
}

void DataForm::connectLists()
{
    connect(lsvLink, &ReportList::listDoubleClicked, this,
            eventSlot(session().reporting, u"lsvLink_DblClick"_s, [this] { mnuLinkView_Click(); }));
    connect(lsvLink, &ReportList::enterPressed, this,
            eventSlot(session().reporting, u"lsvLink_KeyPress"_s, [this] { mnuLinkView_Click(); }));
    connect(lsvLink, &ReportList::menuRequested, this,
            [this](const QPoint& position) { popUp(u"mnuLink"_s, position); });
    connect(lsvCategory, &ReportList::menuRequested, this,
            [this](const QPoint& position) { popUp(u"mnuCategory"_s, position); });
    if (!m_design.acceptsDrops)
        return;
    lsvLink->acceptTextDrops();
    connect(lsvLink, &ReportList::textDropped, this, [this](const QString& text) {
        handleEvent(session().reporting, u"lsvLink_OLEDragDrop"_s, [&] { lsvLink_OLEDragDrop(text); });
    });
}

void DataForm::popUp(const QString& menuName, const QPoint& position)
{
    if (showsDatum())
        findChild<QMenu*>(menuName)->popup(position);
}

void DataForm::SetLinkSource()
{
    session().LinkSourceMode = true;
    session().LinkSourceID = fieldText(1);
    session().LinkSourceName = fieldText(0);
    session().LinkSourceForm = this;
}

// The session may get another table while the choice goes on; this one is held until its end.
// NOLINTNEXTLINE(performance-unnecessary-value-param): a reference would hold nothing
void DataForm::linkToChosen(std::shared_ptr<RecordSet> table)
{
    requireDatum(session(), place());
    const QPointer<DataForm> self(this); // the choice may take the window with it
    SetLinkSource();
    CreateDataList(session(), table, SelectionUse::Link, ListFill::Replace);
    if (self)
        SetLinkList(session(), *this, fieldText(1));
}

void DataForm::mnuLinkRefFile_Click()
{
    requireDatum(session(), place());
    SetLinkSource();
    const Answer answer = session().dialogs.messageBox(
        {.text = u"外部のファイルとリンクする場合は【はい】を、登録済みのファイルデータとリンクする場合は"
                 u"【いいえ】を選択してください。"_s,
         .title = titles::LinkInformation,
         .buttons = Buttons::YesNo});
    if (answer != Answer::Yes) {
        linkToChosen(session().RsRefFile);
        return;
    }
    const QPointer<DataForm> self(this);
    if (RegisterFileAndLink(session(), place()) && !self.isNull())
        SetLinkList(session(), *this, fieldText(1));
}

void DataForm::mnuLinkView_Click()
{
    const auto onFailure = [this](const Error& error) {
        reportUntrapped(session().reporting, error, u"mnuLinkView_Click"_s, titles::SystemOperation);
    };
    guardedBy(onFailure, [&] {
        const int row = lsvLink->selectedRow();
        if (row < 0) {
            session().dialogs.messageBox(
                {.text = u"データが選択されていません。"_s, .title = titles::SystemOperation});
            return;
        }
        ShowData(session(), lsvLink->rows().text(row, LinkIdentifierColumn).toString());
    });
}

void DataForm::mnuLinkDelete_Click()
{
    const int row = lsvLink->selectedRow();
    if (row < 0) {
        session().dialogs.messageBox({.text = u"リンクは存在しません。"_s, .title = titles::SystemOperation});
        return;
    }
    requireDatum(session(), place());
    const QPointer<DataForm> self(this);
    // Nothing is asked: what is deleted must be the link to what the list shows.
    const ListedDatum partner{.identifier = lsvLink->rows().text(row, LinkIdentifierColumn).toString(),
                              .name = lsvLink->rows().text(row, LinkNameColumn).toString()};
    if (const auto shown = presentDatum(session(), fieldText(1)))
        DeleteLink(session(), partner, *shown);
    if (self)
        SetLinkList(session(), *this, fieldText(1));
}

void DataForm::mnuCategoryEntry_Click()
{
    requireDatum(session(), place());
    const QPointer<DataForm> self(this);
    SelectCategory(session(), place());
    if (self)
        AddCategory(session(), *this, fieldText(1));
}

void DataForm::mnuCategoryDelete_Click()
{
    const int row = lsvCategory->selectedRow();
    if (row < 0) {
        session().dialogs.messageBox({.text = u"カテゴリが選択されていません。"_s});
        return;
    }
    requireDatum(session(), place());
    DeleteCategoryEntry(session(), categoryRows().at(static_cast<std::size_t>(row)), fieldText(1));
    AddCategory(session(), *this, fieldText(1));
}

void DataForm::lsvLink_OLEDragDrop(const QString& text)
{
    // What is not registered yet has an identifier that another datum may get.
    if (text.size() != IdentifierLength || !showsDatum())
        return;
    requireDatum(session(), place());
    const QPointer<DataForm> self(this);
    LinkData(session(), fieldText(1), text, 1);
    if (self)
        SetLinkList(session(), *this, fieldText(1));
}

} // namespace quillon
