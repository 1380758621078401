#include "ui/restore/frmRestore.h"

#include "app/base/error.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "core/damage_notice.h"
#include "store/opening.h"
#include "store/session.h"
#include "ui/restore/copies_page.h"
#include "ui/restore/frmKeptDatabases.h"
#include "ui/restore/lost_page.h"
#include "ui/restore/restore_texts.h"
#include "ui/widgets/button_row.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/status_panels.h"

#include <QBoxLayout>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// What the window shows does not depend on the database of the session.
class NothingShown : public MainWindowPort::Shown
{
public:
    void showAgain() override {}
};

/// A text in a page breaks lines; the toolkit would then take the height that the page would like to have for its least.
class Pages : public QTabWidget
{
public:
    using QTabWidget::QTabWidget;
    bool hasHeightForWidth() const override { return false; }
};

} // namespace

frmRestore::frmRestore(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmRestore"_s), m_startFolder(session.CurrentFolder)
{
    setWindowTitle(u"Quillon 復元画面"_s);
    arrange();
}

void frmRestore::arrange()
{
    auto* middle = new QWidget(this);
    auto* rows = new QVBoxLayout(middle);
    auto* top = new QHBoxLayout;
    txtDatabase = new QLineEdit(middle);
    txtDatabase->setObjectName(u"txtDatabase"_s);
    txtDatabase->setReadOnly(true);
    top->addWidget(plainLabel(u"lblDatabase"_s, u"データベース(&D) ："_s, txtDatabase, middle));
    top->addWidget(txtDatabase, 1);
    QPushButton* cmdChoose = addButton(middle, u"cmdChoose"_s, u"選択(&O)"_s, &frmRestore::chooseDatabase);
    describe(cmdChoose, u"別のデータベースを選択します。"_s);
    top->addWidget(cmdChoose);
    rows->addLayout(top);

    tabPages = new Pages(middle);
    tabPages->setObjectName(u"tabPages"_s);
    m_lost = new LostPage(session(), tabPages);
    m_copies = new CopiesPage(session(), tabPages);
    tabPages->addTab(m_lost, u"失われたデータ(&L)"_s);
    tabPages->addTab(m_copies, u"控え(&K)"_s);
    rows->addWidget(tabPages, 1);
    connect(m_copies, &CopiesPage::databaseWanted, this, &frmRestore::databaseWanted);

    auto* bottom = new ButtonRow;
    bottom->addWidget(addButton(middle, u"cmdClose"_s, u"閉じる(&C)"_s, [this] { unload(); }));
    setContents(middle, bottom);

    sbStatus = new StatusPanels(
        {{.objectName = {}, .text = {}, .toolTip = u"データベースの状態を表示します。"_s, .stretches = true}},
        this);
    sbStatus->setObjectName(u"sbStatus"_s);
    setStatusBar(sbStatus);
    constexpr int Width = 1080;
    constexpr int Height = 640;
    // In the middle of the screen by itself: a window that opens over this one at once has to know where it is.
    const QRect room = screen()->availableGeometry();
    const QSize frame(40, 60); // at most; the true one is not known yet
    QRect place(QPoint(0, 0), QSize(Width, Height).boundedTo(room.size() - frame));
    place.moveCenter(room.center());
    setGeometry(place);
}

void frmRestore::showDatabase(const QString& path)
{
    txtDatabase->setText(QDir::toNativeSeparators(path));
    m_isOpen = false;
    m_lost->showNothing();
    m_copies->showDatabase(path);
    findFileFolder(path);
    const QString name = QFileInfo(path).fileName();
    if (!session().files.fileExists(path)) {
        tellUnreadable(path, u"データベース「"_s + name + u"」が見つかりません。"_s);
        return;
    }
    if (!OpenDbFile(session(), path)) {
        tellUnreadable(path, u"データベース「"_s + name + u"」を展開できませんでした。"_s);
        return;
    }
    m_isOpen = true;
    tabPages->setCurrentWidget(m_lost);
    m_lost->read(path);
}

void frmRestore::tellUnreadable(const QString& path, const QString& text)
{
    setStatus(1, text);
    const bool isAnythingLost = m_lost->read(path, text);
    tabPages->setCurrentWidget(m_copies);
    QString advice = m_copies->count() > 0 ? u"［控え］の一覧から控えを取り出すことができます。"_s
                                           : u"このデータベースの控えは残されていません。"_s;
    if (isAnythingLost)
        advice += u"\r\n［失われたデータ］の一覧で、上書きや削除の前の内容を見ることができます。"_s;
    session().dialogs.messageBox({.text = text + u"\r\n"_s + advice, .title = RestoreTitle});
}

void frmRestore::tellDamage(const kept::Damage& damage)
{
    if (m_isOpen)
        TellDamage(session(), damage, ToldIn::TheRestoreWindow);
}

void frmRestore::findFileFolder(const QString& path)
{
    // The menu of a desktop starts the program anywhere; then the registered files lie beside the database, if at all.
    session().CurrentFolder = m_startFolder;
    const QString beside = QDir::toNativeSeparators(QFileInfo(path).absolutePath());
    if (!session().files.folderExists(session().inCurrentFolder(titles::FileFolder)) &&
        session().files.folderExists(beside + QDir::separator() + titles::FileFolder))
        session().CurrentFolder = beside;
}

void frmRestore::chooseDatabase()
{
    std::optional<QString> path;
    auto* window = new frmKeptDatabases(session(), registry());
    connect(window, &frmKeptDatabases::chosen, this, [&path](const QString& chosen) { path = chosen; });
    window->showModal();
    if (path)
        showDatabase(*path);
}

std::unique_ptr<MainWindowPort::Shown> frmRestore::clearDataList()
{
    return std::make_unique<NothingShown>();
}

void frmRestore::setStatus(int /*panel*/, const QString& text)
{
    sbStatus->setText(1, text);
}

QString frmRestore::nodeKey(int /*index*/) const
{
    throw Error(errors::IndexOutOfBounds);
}

QString frmRestore::nodeText(int /*index*/) const
{
    throw Error(errors::IndexOutOfBounds);
}

QString frmRestore::nodeParentKey(int /*index*/) const
{
    throw Error(errors::IndexOutOfBounds);
}

} // namespace quillon
