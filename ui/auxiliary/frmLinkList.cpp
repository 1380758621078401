#include "ui/auxiliary/frmLinkList.h"

#include "app/base/ports/dialogs.h"
#include "core/data_records.h"
#include "core/links.h"
#include "core/listed_datum.h"
#include "store/session.h"
#include "ui/widgets/button_row.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/report_list.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int SourceIdentifierColumn = 4;
constexpr int TargetIdentifierColumn = 5;

const QString NoLinksCounted = u"現在の情報リンク総数 ：  0"_s;

class LinkRows : public LinkRowFill
{
public:
    explicit LinkRows(ReportModel& rows) : m_fill(rows) {}
    void append(const LinkEnd& source, const LinkEnd& target) override
    {
        m_fill.append(
            {source.name, source.kind, target.name, target.kind, source.identifier, target.identifier});
    }
    void finish() override { m_fill.finish(); }

private:
    ReportModel::Fill m_fill;
};

} // namespace

frmLinkList::frmLinkList(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmLinkList"_s)
{
    setWindowTitle(u"リンク情報表示画面"_s);
    buildMenus();
    arrange();
}

void frmLinkList::buildMenus()
{
    QMenu* mnuLink = addMenu(u"mnuLink"_s, u"リンク(&L)"_s);
    addEntry(mnuLink, u"mnuLinkShow"_s, u"表示(&S)"_s, &frmLinkList::mnuLinkShow_Click);
    addEntry(mnuLink, u"mnuLinkDelete"_s, u"削除(&D)"_s, &frmLinkList::mnuLinkDelete_Click);
    addLine(mnuLink, u"mnuLinkLine"_s);
    addEntry(mnuLink, u"mnuLinkClose"_s, u"閉じる(&C)"_s, &frmLinkList::mnuLinkClose_Click);
}

void frmLinkList::arrange()
{
    auto* middle = new QWidget(this);
    auto* rows = new QVBoxLayout(middle);
    lsvLink = new ReportList(session().reporting,
                             {{.header = u"リンク元-名称"_s},
                              {.header = u"種別"_s, .storage = ReportModel::Storage::Dictionary},
                              {.header = u"リンク先-名称"_s},
                              {.header = u"種別"_s, .storage = ReportModel::Storage::Dictionary},
                              {.header = u"リンク元-識別符号"_s},
                              {.header = u"リンク元-識別符号"_s}}, // sic: it holds the target
                             middle);
    lsvLink->setObjectName(u"lsvLink"_s);
    lsvLink->setAccessibleName(u"リンク一覧"_s);
    lsvLink->setSelectionMode(QAbstractItemView::SingleSelection);
    lsvLink->setColumnCharacters({28, 6, 28, 6, 20, 20});
    lsvLink->giveRoomTo({0, 2});
    rows->addWidget(lsvLink, 1);

    auto* bottom = new ButtonRow;
    lblCount = plainLabel(u"lblCount"_s, NoLinksCounted, nullptr, middle);
    bottom->addLeading(lblCount);
    QPushButton* button =
        addButton(middle, u"cmdLinkDelete"_s, u"リンク削除(&D)"_s, &frmLinkList::cmdLinkDelete_Click);
    bottom->addWidget(button);

    setContents(middle, bottom);
    setTabOrder(lsvLink, button);
    // The window itself gets the keys when none of its controls has the focus.
    for (QWidget* control :
         {static_cast<QWidget*>(this), static_cast<QWidget*>(lsvLink), static_cast<QWidget*>(button)})
        control->installEventFilter(this);
    lsvLink->setFocus();
    resize(sizeHint().expandedTo({860, 440}));
}

void frmLinkList::reset()
{
    lsvLink->rows().clear();
    lblCount->setText(NoLinksCounted);
}

std::unique_ptr<LinkRowFill> frmLinkList::fillRows()
{
    return std::make_unique<LinkRows>(lsvLink->rows());
}

void frmLinkList::setCount(const QString& text)
{
    lblCount->setText(text);
}

QString frmLinkList::cell(int row, int column) const
{
    return lsvLink->rows().text(row, column).toString();
}

void frmLinkList::mnuLinkShow_Click()
{
    const int row = lsvLink->selectedRow();
    if (row < 0)
        return;
    const QString target = cell(row, TargetIdentifierColumn);
    ShowData(session(), cell(row, SourceIdentifierColumn));
    ShowData(session(), target);
}

void frmLinkList::mnuLinkDelete_Click()
{
    const int row = lsvLink->selectedRow();
    if (row < 0) {
        session().dialogs.messageBox({.text = u"リンクが選択されていません。"_s});
        return;
    }
    const QString targetIdentifier =
        cell(row, TargetIdentifierColumn); // read before a box can let the list change
    const auto source = presentDatum(session(), cell(row, SourceIdentifierColumn));
    const auto target = source ? presentDatum(session(), targetIdentifier) : std::nullopt;
    if (!source || !target)
        return;
    const Answer answer =
        session().dialogs.messageBox({.text = u"<"_s + source->name + u"> と <"_s + target->name +
                                              u">のリンクを削除をしますか。"_s, // sic: を twice
                                      .buttons = Buttons::YesNo});
    if (answer != Answer::Yes)
        return;
    DeleteLink(session(), *source, *target);
    SetAllLinkList(session());
}

void frmLinkList::cmdLinkDelete_Click()
{
    mnuLinkDelete_Click();
}

void frmLinkList::mnuLinkClose_Click()
{
    unload();
}

bool frmLinkList::eventFilter(QObject* watched, QEvent* event)
{
    // Enter closes the window when it is released, wherever in the window it was pressed; the Enter that has just
    // answered a question was pressed elsewhere.
    if (event->type() == QEvent::KeyPress) {
        m_pressedKeys.press(*static_cast<QKeyEvent*>(event));
    } else if (event->type() == QEvent::FocusOut) {
        m_pressedKeys.forget();
    } else if (event->type() == QEvent::KeyRelease) {
        const auto& released = *static_cast<QKeyEvent*>(event);
        const bool pressedHere = m_pressedKeys.release(released);
        if (pressedHere && (released.key() == Qt::Key_Return || released.key() == Qt::Key_Enter)) {
            handleEvent(session().reporting, u"Form_KeyUp"_s, [this] { unload(); });
            return true;
        }
    }
    return FormWindow::eventFilter(watched, event);
}

} // namespace quillon
