#include "ui/restore/copies_page.h"

#include "app/base/ports/dialogs.h"
#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "core/kept_copies.h"
#include "store/session.h"
#include "ui/restore/restore_texts.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/may_act.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/wait_cursor.h"

#include <QBoxLayout>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QPushButton>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int CopyNumberColumn = 9; // hidden: the place in the list of copies

} // namespace

CopiesPage::CopiesPage(Session& session, QWidget* parent) : QWidget(parent), m_session(session)
{
    arrange();
}

CopiesPage::~CopiesPage() = default;

void CopiesPage::arrange()
{
    auto* rows = new QVBoxLayout(this);
    lsvCopy = new ReportList(m_session.reporting,
                             {{.header = u"作成日時"_s},
                              {.header = u"状態"_s, .storage = ReportModel::Storage::Dictionary},
                              {.header = u"定義"_s},
                              {.header = u"文献"_s},
                              {.header = u"FILE"_s},
                              {.header = u"リンク"_s},
                              {.header = u"カテゴリ"_s},
                              {.header = u"登録ファイル"_s},
                              {.header = u"大きさ"_s},
                              {.header = u"番号"_s}},
                             this);
    lsvCopy->setObjectName(u"lsvCopy"_s);
    lsvCopy->setAccessibleName(u"控え一覧"_s);
    lsvCopy->setSelectionMode(QAbstractItemView::SingleSelection);
    lsvCopy->setColumnCharacters({20, 12, 9, 9, 9, 9, 9, 12, 14, 1});
    lsvCopy->setColumnHidden(CopyNumberColumn, true);
    lsvCopy->giveRoomTo({1});
    rows->addWidget(plainLabel(u"lblCopy"_s, u"新しい順の控えの一覧(&G) ："_s, lsvCopy, this));
    rows->addWidget(lsvCopy, 1);
    auto* bottom = new QHBoxLayout;
    lblCopyCount = plainLabel(u"lblCopyCount"_s, {}, nullptr, this);
    lblCopyCount->setWordWrap(true);
    bottom->addWidget(lblCopyCount, 1);
    cmdTakeOut = new QPushButton(u"この控えを取り出す(&E)"_s, this);
    cmdTakeOut->setObjectName(u"cmdTakeOut"_s);
    cmdTakeOut->setEnabled(false);
    bottom->addWidget(cmdTakeOut);
    rows->addLayout(bottom);

    Reporting& reporting = m_session.reporting;
    connect(cmdTakeOut, &QPushButton::clicked, this, eventSlot(reporting, u"cmdTakeOut_Click"_s, [this] {
                if (mayActOn(*cmdTakeOut))
                    cmdTakeOut_Click();
            }));
    connect(lsvCopy, &ReportList::rowDoubleClicked, this,
            eventSlot(reporting, u"lsvCopy_DblClick"_s, [this] { cmdTakeOut_Click(); }));
    connect(lsvCopy->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { cmdTakeOut->setEnabled(lsvCopy->selectedRow() >= 0); });
}

void CopiesPage::showDatabase(const QString& path)
{
    m_database = path;
    m_copies = ListCopies(m_session, path);
    lsvCopy->rows().clear();
    ReportModel::Fill fill(lsvCopy->rows());
    for (std::size_t i = 0; i < m_copies.size(); ++i) {
        const kept::Copy& copy = m_copies[i];
        const auto count = [&](const QString& table) { return QString::number(copy.counts.value(table)); };
        const auto kept = std::count_if(copy.files.begin(), copy.files.end(),
                                        [](const kept::CopiedFile& file) { return !file.hash.isEmpty(); });
        fill.append({copy.time.toString(TimeFormat), copy.isDoubtful ? u"件数が急減"_s : u"正常"_s,
                     count(u"Main"_s), count(u"RefDoc"_s), count(u"RefFile"_s), count(u"Link"_s),
                     count(u"Category_ID"_s), QString::number(kept),
                     QLocale(QLocale::Japanese).formattedDataSize(copy.size), QString::number(i)});
    }
    fill.finish();
    if (!m_copies.empty())
        lsvCopy->selectRow(0);
    lblCopyCount->setText(u"控えの数 ： %1"_s.arg(m_copies.size()));
}

QString CopiesPage::proposedName(const kept::Copy& copy) const
{
    const QFileInfo database(m_database);
    // In the place of one that is gone the program finds it as ever.
    if (database.dir().exists() && !m_session.files.entryExists(m_database))
        return QDir::toNativeSeparators(m_database);
    const QDir folder = database.dir().exists() ? database.dir() : QDir(m_session.CurrentFolder);
    return QDir::toNativeSeparators(folder.filePath(database.completeBaseName() + u"_控え_"_s +
                                                    copy.time.toString(u"yyyy-MM-dd_HHmmss"_s) + u".mdb"_s));
}

void CopiesPage::cmdTakeOut_Click()
{
    const int row = lsvCopy->selectedRow();
    if (row < 0)
        return;
    const kept::Copy copy = m_copies.at(lsvCopy->rows().text(row, CopyNumberColumn).toULongLong());
    const std::optional<QString> target = m_session.dialogs.fileDialog(
        {.purpose = FileDialog::Purpose::Save, .filter = DatabaseFiles, .fileName = proposedName(copy)});
    if (!target)
        return;
    if (m_session.files.entryExists(*target)) {
        m_session.dialogs.messageBox({.text = u"「"_s + *target +
                                              u"」は既に存在します。\r\n"
                                              u"上書きはできません。別の名前を指定してください。"_s,
                                      .title = titles::SystemAudit});
        return;
    }
    takeOut(copy, *target);
}

void CopiesPage::takeOut(const kept::Copy& copy, const QString& target)
{
    TakenOutFiles files;
    {
        const WaitCursor cursor;
        const std::optional<TakenOutFiles> taken = TakeOutCopy(m_session, copy, target);
        if (!taken)
            return;
        files = *taken;
    }
    QString text = u"控えを「"_s + target + u"」に取り出しました。"_s;
    if (files.written > 0)
        text += u"\r\n登録ファイルを RefFile フォルダに %1 個取り出しました。"_s.arg(files.written);
    if (files.different > 0)
        text += u"\r\n内容の異なる同じ名前の登録ファイルが %1 個あり、そのままにしました。"_s.arg(
            files.different);
    if (files.lost > 0)
        text += u"\r\n内容が残されていない登録ファイルが %1 個あります。"_s.arg(files.lost);
    text += u"\r\nQuillon で展開しますか。"_s;
    if (m_session.dialogs.messageBox({.text = text, .title = RestoreTitle, .buttons = Buttons::YesNo}) ==
        Answer::Yes)
        Q_EMIT databaseWanted(target);
}

} // namespace quillon
