#include "ui/restore/frmKeptDatabases.h"

#include "app/base/ports/dialogs.h"
#include "app/base/ports/files.h"
#include "core/kept_copies.h"
#include "store/session.h"
#include "ui/restore/restore_texts.h"
#include "ui/widgets/button_row.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/report_list.h"

#include <QBoxLayout>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int PathColumn = 3;

} // namespace

frmKeptDatabases::frmKeptDatabases(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmKeptDatabases"_s)
{
    setWindowTitle(u"復元するデータベースの選択"_s);
    arrange();
    fill();
}

void frmKeptDatabases::arrange()
{
    auto* middle = new QWidget(this);
    auto* rows = new QVBoxLayout(middle);
    lsvDatabase = new ReportList(session().reporting,
                                 {{.header = u"データベース"_s},
                                  {.header = u"最後の控え"_s},
                                  {.header = u"最後の履歴"_s},
                                  {.header = u"場所"_s}},
                                 middle);
    lsvDatabase->setObjectName(u"lsvDatabase"_s);
    lsvDatabase->setAccessibleName(u"データベース一覧"_s);
    lsvDatabase->setSelectionMode(QAbstractItemView::SingleSelection);
    lsvDatabase->setColumnCharacters({20, 20, 20, 30});
    lsvDatabase->giveRoomTo({PathColumn});
    rows->addWidget(
        plainLabel(u"lblDatabase"_s, u"控えか履歴のあるデータベース(&L) ："_s, lsvDatabase, middle));
    rows->addWidget(lsvDatabase, 1);
    auto* buttons = new ButtonRow;
    QPushButton* cmdFile =
        addButton(middle, u"cmdFile"_s, u"ファイルを指定(&F)"_s, &frmKeptDatabases::cmdFile_Click);
    cmdOK = addButton(middle, u"cmdOK"_s, u"OK"_s, &frmKeptDatabases::cmdOK_Click);
    QPushButton* cmdCancel =
        addButton(middle, u"cmdCancel"_s, u"Cancel"_s, &frmKeptDatabases::cmdCancel_Click);
    buttons->addLeading(cmdFile);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    setContents(middle, buttons);
    setTabOrder(lsvDatabase, cmdFile);
    setTabOrder(cmdFile, cmdOK);
    setTabOrder(cmdOK, cmdCancel);

    Reporting& reporting = session().reporting;
    connect(lsvDatabase, &ReportList::rowDoubleClicked, this,
            eventSlot(reporting, u"lsvDatabase_DblClick"_s, [this] { cmdOK_Click(); }));
    connect(lsvDatabase, &ReportList::enterPressed, this,
            eventSlot(reporting, u"lsvDatabase_KeyPress"_s, [this] { cmdOK_Click(); }));
    connect(lsvDatabase->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { cmdOK->setEnabled(lsvDatabase->selectedRow() >= 0); });
    lsvDatabase->setFocus();
    openOverMainWindow();
    constexpr int Width = 700;
    constexpr int Height = 320;
    resize(sizeHint().expandedTo({Width, Height}));
}

void frmKeptDatabases::fill()
{
    const auto text = [](const QDateTime& time) {
        return time.isValid() ? time.toString(TimeFormat) : u"なし"_s;
    };
    ReportModel::Fill rows(lsvDatabase->rows());
    for (const KeptDatabase& database : ListKeptDatabases(session())) {
        QString name = QFileInfo(database.path).fileName();
        if (!session().files.fileExists(database.path))
            name += u" (見つかりません)"_s;
        rows.append(
            {name, text(database.copied), text(database.changed), QDir::toNativeSeparators(database.path)});
    }
    rows.finish();
    if (lsvDatabase->rows().rowCount() > 0)
        lsvDatabase->selectRow(0);
    cmdOK->setEnabled(lsvDatabase->selectedRow() >= 0);
}

void frmKeptDatabases::answer(const QString& path)
{
    if (unload())
        Q_EMIT chosen(path);
}

void frmKeptDatabases::cmdOK_Click()
{
    const int row = lsvDatabase->selectedRow();
    if (row >= 0)
        answer(lsvDatabase->rows().text(row, PathColumn).toString());
}

void frmKeptDatabases::cmdFile_Click()
{
    const std::optional<QString> path = session().dialogs.fileDialog(
        {.purpose = FileDialog::Purpose::Open, .filter = DatabaseFiles, .folder = session().CurrentFolder});
    if (path)
        answer(*path);
}

void frmKeptDatabases::cmdCancel_Click()
{
    unload();
}

void frmKeptDatabases::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && !event->isAutoRepeat())
        handleEvent(session().reporting, u"Form_KeyPress"_s, [this] { unload(); });
    else
        FormWindow::keyPressEvent(event);
}

} // namespace quillon
