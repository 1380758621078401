#include "ui/restore/lost_page.h"

#include "app/base/ports/clock.h"
#include "app/base/ports/dialogs.h"
#include "core/restoring.h"
#include "store/session.h"
#include "ui/restore/comparison_view.h"
#include "ui/restore/restore_texts.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/may_act.h"
#include "ui/widgets/one_line_input.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/wait_cursor.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QSplitter>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int LostNumberColumn = 4; // hidden: the place in the order of the list

/// The choices of a kind after that of all of them.
const std::initializer_list<EventKind> Kinds = {EventKind::ItemDeleted,     EventKind::ItemChanged,
                                                EventKind::LinkRemoved,     EventKind::TakenOutOfCategory,
                                                EventKind::CategoryDeleted, EventKind::CategoryRenamed,
                                                EventKind::FileReplaced};

bool isSame(const LostEntry& a, const LostEntry& b)
{
    return a.time == b.time && a.kind == b.kind && a.identifier == b.identifier && a.name == b.name;
}

} // namespace

LostPage::LostPage(Session& session, QWidget* parent)
    : QWidget(parent), m_session(session), m_reading(new QTimer(this))
{
    m_reading->setObjectName(u"tmrReading"_s);
    m_reading->setInterval(0);
    arrange();
    connectControls();
    showNothing();
}

LostPage::~LostPage() = default;

void LostPage::arrange()
{
    auto* columns = new QHBoxLayout(this);
    auto* parts = new QSplitter(Qt::Horizontal, this);
    parts->setChildrenCollapsible(false);
    columns->addWidget(parts);
    parts->addWidget(makeList());

    auto* right = new QWidget(parts);
    auto* rows = new QVBoxLayout(right);
    rows->setContentsMargins(0, 0, 0, 0);
    m_comparison = new ComparisonView(m_session.reporting, right);
    rows->addWidget(m_comparison, 1);
    cmdPutBack = new QPushButton(u"選択したデータを戻す(&R)"_s, right);
    cmdPutBack->setObjectName(u"cmdPutBack"_s);
    rows->addWidget(cmdPutBack, 0, Qt::AlignRight);
    parts->setStretchFactor(0, 1);
    parts->setStretchFactor(1, 1);
    constexpr int Half = 10'000; // both alike, whatever they would like to have
    parts->setSizes({Half, Half});
}

QWidget* LostPage::makeList()
{
    auto* left = new QWidget(this);
    auto* rows = new QVBoxLayout(left);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* question = new QGridLayout;
    txtFilter = new QLineEdit(left);
    txtFilter->setObjectName(u"txtFilter"_s);
    txtFilter->setClearButtonEnabled(true);
    keepInputOnOneLine(*txtFilter);
    describe(txtFilter, u"名称、内容、識別符号のどれかに含まれる文字列"_s);
    question->addWidget(plainLabel(u"lblFilter"_s, u"検索文字列(&F) ："_s, txtFilter, left), 0, 0);
    question->addWidget(txtFilter, 0, 1);
    cboKind = new QComboBox(left);
    cboKind->setObjectName(u"cboKind"_s);
    cboKind->addItem(u"すべて"_s);
    for (const EventKind kind : Kinds)
        cboKind->addItem(lostKindName(kind), static_cast<int>(kind));
    question->addWidget(plainLabel(u"lblKind"_s, u"できごと(&T) ："_s, cboKind, left), 1, 0);
    question->addWidget(cboKind, 1, 1);
    question->setColumnStretch(1, 1);
    rows->addLayout(question);

    lsvLost = new ReportList(m_session.reporting,
                             {{.header = u"日時"_s},
                              {.header = u"できごと"_s, .storage = ReportModel::Storage::Dictionary},
                              {.header = u"名称"_s},
                              {.header = u"識別符号"_s},
                              {.header = u"番号"_s}},
                             left);
    lsvLost->setObjectName(u"lsvLost"_s);
    lsvLost->setAccessibleName(u"失われたデータの一覧"_s);
    lsvLost->setSelectionMode(QAbstractItemView::SingleSelection);
    lsvLost->setColumnCharacters({19, 17, 16, 14, 1});
    lsvLost->giveRoomTo({2});
    lsvLost->setColumnHidden(LostNumberColumn, true);
    rows->addWidget(plainLabel(u"lblLost"_s, u"新しい順の一覧(&G) ："_s, lsvLost, left));
    rows->addWidget(lsvLost, 1);
    lblLostCount = plainLabel(u"lblLostCount"_s, {}, nullptr, left);
    lblLostCount->setWordWrap(true);
    rows->addWidget(lblLostCount);
    return left;
}

void LostPage::connectControls()
{
    Reporting& reporting = m_session.reporting;
    connect(m_reading, &QTimer::timeout, this,
            eventSlot(reporting, u"tmrReading_Timer"_s, [this] { readOn(); }));
    connect(txtFilter, &QLineEdit::textChanged, this,
            eventSlot(reporting, u"txtFilter_Change"_s, [this] { ask(); }));
    connect(cboKind, &QComboBox::currentIndexChanged, this,
            eventSlot(reporting, u"cboKind_Change"_s, [this] { ask(); }));
    connect(lsvLost->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            eventSlot(reporting, u"lsvLost_ItemClick"_s, [this] { showSelected(); }));
    connect(lsvLost, &ReportList::rowDoubleClicked, this,
            eventSlot(reporting, u"lsvLost_DblClick"_s, [this] { cmdPutBack_Click(); }));
    connect(cmdPutBack, &QPushButton::clicked, this, eventSlot(reporting, u"cmdPutBack_Click"_s, [this] {
                if (mayActOn(*cmdPutBack))
                    cmdPutBack_Click();
            }));
}

void LostPage::showNothing()
{
    m_reading->stop();
    m_things.reset();
    m_listed = 0;
    lsvLost->rows().clear();
    showSelected();
    lblLostCount->clear();
}

bool LostPage::read(const QString& database, const QString& unreadable)
{
    showNothing();
    m_database = database;
    m_unreadable = unreadable;
    m_things = std::make_unique<LostThings>(m_session, database);
    m_things->ask({});
    m_isAnything = m_things->readOn(1);
    ask();
    return m_isAnything;
}

void LostPage::ask()
{
    if (!m_things)
        return;
    const QVariant kind = cboKind->currentData();
    m_things->ask(
        {.text = txtFilter->text(),
         .kind = kind.isValid() ? std::optional(static_cast<EventKind>(kind.toInt())) : std::nullopt});
    m_listed = 0;
    lsvLost->rows().clear();
    showSelected();
    tellCount(true);
    m_reading->start();
}

void LostPage::readOn()
{
    constexpr qint64 Slice = 40; // milliseconds: shorter than a person notices
    constexpr std::size_t Step = 500;
    // A failure ends the reading: it would come again and again.
    auto stop = qScopeGuard([this] { m_reading->stop(); });
    const qint64 begin = m_session.clock.milliseconds();
    bool goesOn = true;
    while (goesOn && m_session.clock.milliseconds() - begin < Slice) {
        goesOn = m_things->readOn(Step);
        appendRows();
    }
    if (goesOn)
        stop.dismiss();
    else
        m_awaited.reset();
    tellCount(goesOn);
}

void LostPage::appendRows()
{
    if (m_listed == m_things->count())
        return;
    int awaited = -1;
    ReportModel::Fill fill(lsvLost->rows());
    for (; m_listed < m_things->count(); ++m_listed) {
        const LostEntry entry = m_things->entry(m_listed);
        fill.append({entry.time.toString(TimeFormat), lostKindName(entry.kind), entry.name, entry.identifier,
                     QString::number(m_listed)});
        if (awaited < 0 && m_awaited && isSame(entry, *m_awaited))
            awaited = static_cast<int>(m_listed);
    }
    fill.finish();
    const bool hasCurrent = lsvLost->currentIndex().isValid();
    if (awaited >= 0) {
        lsvLost->selectRow(awaited);
        m_awaited.reset();
    } else if (!hasCurrent) {
        // A list that is reached by key begins at its first row.
        lsvLost->selectionModel()->setCurrentIndex(lsvLost->rows().index(0, 0),
                                                   QItemSelectionModel::NoUpdate);
    }
}

void LostPage::tellCount(bool goesOn)
{
    QString text = u"表示件数 ： %1"_s.arg(m_listed);
    if (goesOn)
        text += u" (読み込み中です)"_s;
    if (!m_unreadable.isEmpty() && !m_isAnything)
        text = m_unreadable;
    else if (!m_unreadable.isEmpty())
        text += u"\n"_s + m_unreadable + u"見ることはできますが、戻すことはできません。"_s;
    lblLostCount->setText(text);
}

std::optional<std::size_t> LostPage::selected() const
{
    const int row = lsvLost->selectedRow();
    if (row < 0 || !m_things)
        return std::nullopt;
    return lsvLost->rows().text(row, LostNumberColumn).toULongLong();
}

void LostPage::showSelected()
{
    const std::optional<std::size_t> number = selected();
    cmdPutBack->setEnabled(false);
    if (!number) {
        m_comparison->clear();
        return;
    }
    m_comparison->show(m_things->details(*number));
    cmdPutBack->setEnabled(m_things->isOfOpenDatabase() && m_things->event(*number).kind != EventKind::Other);
}

bool LostPage::isConfirmed(const LostEntry& entry, const LostDetails& details)
{
    QString question;
    switch (entry.kind) {
    case EventKind::ItemDeleted:
        question = u"データ「"_s + entry.name + u"」を戻しますか。"_s;
        if (details.isIdentifierTaken)
            question += u"\r\n同じ識別符号のデータがあるため、別のデータとして登録されます。"_s;
        break;
    case EventKind::CategoryDeleted:
        question = u"カテゴリ「"_s + entry.name + u"」を戻しますか。"_s;
        if (details.isIdentifierTaken)
            question += u"\r\n同じ識別符号のカテゴリがあるため、別のカテゴリとして登録されます。"_s;
        break;
    case EventKind::ItemChanged:
        question = u"データ「"_s + entry.name +
                   u"」を更新前の内容に戻しますか。\r\n現在の内容もこの一覧に残ります。"_s;
        break;
    case EventKind::CategoryRenamed:
        question = u"カテゴリの名称を「"_s + entry.name + u"」に戻しますか。"_s;
        break;
    case EventKind::LinkRemoved:
        question = u"リンク「"_s + entry.name + u"」を戻しますか。"_s;
        break;
    case EventKind::TakenOutOfCategory:
        question = u"分類「"_s + entry.name + u"」を戻しますか。"_s;
        break;
    case EventKind::FileReplaced:
        question = u"ファイル「"_s + entry.name +
                   u"」を上書き前の内容に戻しますか。\r\n現在の内容もこの一覧に残ります。"_s;
        break;
    case EventKind::Other:
        return false;
    }
    return m_session.dialogs.messageBox(
               {.text = question, .title = RestoreTitle, .buttons = Buttons::OkCancel}) == Answer::Ok;
}

void LostPage::cmdPutBack_Click()
{
    const std::optional<std::size_t> number = selected();
    if (!number || !cmdPutBack->isEnabled())
        return;
    const LostEntry entry = m_things->entry(*number);
    const LostDetails details = m_things->details(*number);
    const bool isDone = details.present() == LostDetails::Present::Same;
    const bool makesAnother =
        entry.kind == EventKind::ItemDeleted || entry.kind == EventKind::CategoryDeleted;
    const auto tell = [this](const QString& text) {
        m_session.dialogs.messageBox({.text = text, .title = RestoreTitle, .icon = Icon::Information});
    };
    if (isDone && !makesAnother) {
        tell(u"現在も同じ内容です。戻すものはありません。"_s);
        return;
    }
    const bool isGone = details.present() == LostDetails::Present::Gone;
    if (isGone && (entry.kind == EventKind::ItemChanged || entry.kind == EventKind::CategoryRenamed)) {
        tell(u"「"_s + entry.name +
             u"」は更新の後で削除されています。先に削除されたものを戻してください。"_s);
        return;
    }
    if (!isConfirmed(entry, details))
        return;
    std::optional<PutBackResult> result;
    {
        const WaitCursor cursor;
        result = PutBack(m_session, *m_things, *number);
    }
    if (!result)
        return;
    tell(result->text);
    // What was replaced is at the top of the list now; the person stays where it was.
    m_awaited = entry;
    m_things = std::make_unique<LostThings>(m_session, m_database);
    ask();
}

} // namespace quillon
