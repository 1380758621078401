#include "ui/main/frmMainMenu.h"

#include "app/base/ports/clock.h"
#include "app/base/ports/dialogs.h"
#include "app/base/twips.h"
#include "core/category_entry.h"
#include "store/session.h"
#include "ui/main/category_tree.h"
#include "ui/main/main_window_metrics.h"
#include "ui/main/pane_splitter.h"
#include "ui/main/shown_list.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/pane_hint.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QFrame>
#include <QGuiApplication>
#include <QProgressBar>
#include <QScreen>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

StatusPanels* makeStatusBar(QWidget* parent)
{
    const auto width = [](double twips) { return pixelsFromTwips(twips); };
    return new StatusPanels({{.objectName = u"Status"_s,
                              .width = width(metrics::StatusPanelWidth),
                              .minimumWidth = width(metrics::StatusPanelLeastWidth),
                              .text = u"展開されているデータベースはありません。"_s,
                              .toolTip = u"システムの状態を表示します。"_s,
                              .stretches = true},
                             {.objectName = {},
                              .width = width(metrics::CountPanelWidth),
                              .minimumWidth = 0,
                              .text = u"表示データ数 ： "_s,
                              .toolTip = u"現在表示されているデータ数を表示します。"_s,
                              .stretches = false},
                             {.objectName = u"Date"_s,
                              .width = width(metrics::DatePanelWidth),
                              .minimumWidth = 0,
                              .text = {},
                              .toolTip = u"全体の日付を表示します。"_s,
                              .stretches = false},
                             {.objectName = u"Time"_s,
                              .width = width(metrics::TimePanelWidth),
                              .minimumWidth = 0,
                              .text = {},
                              .toolTip = u"現在の時刻を表示します。"_s,
                              .stretches = false}},
                            parent);
}

} // namespace

frmMainMenu::frmMainMenu(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmMainMenu"_s)
{
    setWindowTitle(u"Quillon メイン画面"_s);
    buildControls();
    buildMenus();
    connectKeys();
    connectTree();
    connectList();
    m_progress = std::make_unique<FillProgress>(*pgbMain, session.clock);
    m_filler = std::make_unique<DataListFiller>(session, lsvData->rows(), *m_progress);
    session.setMainWindow(this);
    keepAtLeast(metrics::LeastWidth, metrics::LeastHeight);

    const QSize wanted(pixelsFromTwips(metrics::DesignWidth), pixelsFromTwips(metrics::DesignHeight));
    resize(wanted);
    setAcceptDrops(true);
    tvwCategory->setFocus();
}

frmMainMenu::~frmMainMenu()
{
    session().setMainWindow(nullptr);
}

void frmMainMenu::buildControls()
{
    auto* surface = new QWidget(this);
    surface->installEventFilter(this);
    setCentralWidget(surface);

    tvwCategory = new KeyedTree(surface);
    tvwCategory->setObjectName(u"tvwCategory"_s);
    tvwCategory->setAccessibleName(u"カテゴリツリー"_s);

    lsvData = new ReportList(session().reporting,
                             {{u"名称"_s, ReportModel::Storage::Text},
                              {u"種別"_s, ReportModel::Storage::Dictionary},
                              {u"ＩＤ"_s, ReportModel::Storage::Text},
                              {u"下位分類"_s, ReportModel::Storage::Dictionary}},
                             surface);
    lsvData->setObjectName(u"lsvData"_s);
    lsvData->setAccessibleName(u"データ一覧"_s);
    lsvData->setColumnCharacters({36, 8, 18, 10});
    lsvData->giveRoomTo({0, 3});

    m_treeHint = std::make_unique<PaneHint>(
        *tvwCategory, u"lblTreeHint"_s,
        u"初めての方は、［ファイル(F)］→［新規データベース作成(N)］でデータベースを作成してください。"_s);
    m_listHint = std::make_unique<PaneHint>(
        *lsvData, u"lblListHint"_s,
        u"データベースがあるときは、［ファイル(F)］→［既存データベース展開(O)］で展開してください。"_s);

    // The handle begins below the upper edge of the panes; what it leaves of the gap between them lies under it.
    m_splitterGap = new QWidget(surface);
    m_splitterGap->setCursor(Qt::SizeHorCursor);
    m_splitterGap->installEventFilter(this);
    imgSplitter = new PaneSplitter(surface);
    imgSplitter->setObjectName(u"imgSplitter"_s);
    imgSplitter->setAccessibleName(u"カテゴリツリーとデータ一覧の境界"_s);
    describe(imgSplitter, u"ドラッグ、または Ctrl + ←、→ で境界を移動します。"_s);
    m_splitterGap->setToolTip(imgSplitter->toolTip());
    imgSplitter->setCursor(Qt::SizeHorCursor);
    imgSplitter->resize(pixelsFromTwips(metrics::SplitterWidth), pixelsFromTwips(metrics::SplitterHeight));
    imgSplitter->installEventFilter(this);

    picSplitter = new QFrame(surface);
    picSplitter->setObjectName(u"picSplitter"_s);
    picSplitter->setAutoFillBackground(true);
    QPalette grey = picSplitter->palette();
    grey.setColor(QPalette::Window, QColor(0x80, 0x80, 0x80));
    picSplitter->setPalette(grey);
    picSplitter->hide();

    pgbMain = new QProgressBar(surface);
    pgbMain->setObjectName(u"pgbMain"_s);
    pgbMain->setAccessibleName(u"一覧の作成の進み具合"_s);
    pgbMain->setTextVisible(false);
    pgbMain->setFixedHeight(pixelsFromTwips(metrics::ProgressHeight));
    pgbMain->hide();

    sbStatus = makeStatusBar(this);
    sbStatus->setObjectName(u"sbStatus"_s);
    sbStatus->keepDateAndTime(3, 4, session().clock);
    setStatusBar(sbStatus);

    setTabOrder(tvwCategory, lsvData);
}

bool frmMainMenu::queryUnload()
{
    const Answer answer = session().dialogs.messageBox({.text = u"Quillonを終了しますか。"_s,
                                                        .title = titles::SystemOperation,
                                                        .buttons = Buttons::OkCancel});
    if (answer != Answer::Ok)
        return false;
    Q_EMIT endProgram();
    return true;
}

std::unique_ptr<MainWindowPort::Shown> frmMainMenu::clearDataList()
{
    auto shown = std::make_unique<ShownList>(*lsvData, *sbStatus, m_listed);
    // The count must not speak of rows that are gone; before the first list there is nothing to correct.
    if (shown->hasRows())
        showDataCount();
    return shown;
}

void frmMainMenu::setStatus(int panel, const QString& text)
{
    sbStatus->setText(panel, text);
}

void frmMainMenu::rebuildCategoryTree()
{
    m_listed = {};
    BuildCategoryTree(session(), *tvwCategory, *m_progress);
}

int frmMainMenu::selectedNodeIndex() const
{
    return tvwCategory->selectedPosition();
}

int frmMainMenu::requiredNodeIndex() const
{
    const int node = selectedNodeIndex();
    if (node == 0)
        throw Error(errors::ObjectNotSet, u"カテゴリツリーの項目が選択されていません。"_s);
    return node;
}

int frmMainMenu::listedNodeIndex() const
{
    return m_listed.identifier.isEmpty() ? 0 : tvwCategory->nodes().position(m_listed.identifier);
}

int frmMainMenu::nodeCount() const
{
    return tvwCategory->nodes().nodeCount();
}

QString frmMainMenu::nodeKey(int index) const
{
    return tvwCategory->nodes().key(index);
}

QString frmMainMenu::nodeText(int index) const
{
    return tvwCategory->nodes().text(index);
}

QString frmMainMenu::nodeParentKey(int index) const
{
    const int parent = tvwCategory->nodes().parentPosition(index);
    return parent == 0 ? QString() : tvwCategory->nodes().key(parent);
}

QString frmMainMenu::GetNewCategory_ID(const QString& parentKey, bool topLevel) const
{
    const KeyedTreeModel& nodes = tvwCategory->nodes();
    return newCategoryIdentifier(topLevel ? QString() : parentKey + u'-', [&](const QString& identifier) {
        return GetNodeIndex(nodes, identifier) != 0;
    });
}

} // namespace quillon
