#include "ui/auxiliary/frmManual.h"

#include "app/base/ports/dialogs.h"
#include "app/base/ports/files.h"
#include "app/base/titles.h"
#include "store/session.h"
#include "ui/auxiliary/manual_text.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/keyed_tree.h"

#include <QApplication>
#include <QDir>
#include <QKeyEvent>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QWindow>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

frmManual::frmManual(Session& session, WindowRegistry& registry, const QString& folder)
    : FormWindow(session, registry, u"frmManual"_s), m_page(folder + u"/manual.html"_s)
{
    setWindowTitle(u"Quillon 機能仕様書"_s);
    arrange();
    connectKeys();
}

frmManual::~frmManual() = default;

void frmManual::arrange()
{
    m_panes = new QSplitter(this);
    m_panes->setChildrenCollapsible(false);
    tvwChapter = new KeyedTree(m_panes);
    tvwChapter->setObjectName(u"tvwChapter"_s);
    tvwChapter->setAccessibleName(u"目次"_s);
    tvwChapter->setRootIsDecorated(false);
    tvwChapter->setAcceptDrops(false);
    txtManual = new ManualText(m_panes);
    txtManual->setObjectName(u"txtManual"_s);
    txtManual->setAccessibleName(u"本文"_s);
    setCentralWidget(m_panes);
    setTabOrder(tvwChapter, txtManual);

    const int character = fontMetrics().horizontalAdvance(u'あ');
    constexpr int ChapterCharacters = 17;
    constexpr int TextCharacters = 52;
    constexpr int Lines = 34;
    m_panes->setStretchFactor(1, 1);
    m_panes->setSizes({ChapterCharacters * character, TextCharacters * character});
    resize(QSize((ChapterCharacters + TextCharacters) * character, Lines * fontMetrics().lineSpacing())
               .boundedTo(screen()->availableSize() - QSize(40, 60)));

    Reporting& reporting = session().reporting;
    const auto follow = [this, &reporting](int position) {
        handleEvent(reporting, u"tvwChapter_NodeClick"_s,
                    [&] { txtManual->goTo(tvwChapter->nodes().key(position)); });
    };
    connect(tvwChapter, &KeyedTree::nodeClicked, this, follow);
    connect(tvwChapter, &KeyedTree::nodeChosen, this, follow);
    connect(txtManual, &QTextBrowser::sourceChanged, this, [this](const QUrl& place) {
        const int position = tvwChapter->nodes().position(place.fragment(QUrl::FullyDecoded));
        if (position != 0)
            tvwChapter->select(position);
    });
}

void frmManual::connectKeys()
{
    const auto onKey = [this](const QKeySequence& key, const std::function<void()>& act) {
        auto* shortcut = new QShortcut(key, this);
        shortcut->setAutoRepeat(false); // held down, it would end in either pane by chance
        connect(shortcut, &QShortcut::activated, this,
                eventSlot(session().reporting, u"Form_KeyDown"_s, act));
    };
    onKey(Qt::Key_F6, [this] { goToOtherPane(); });
    onKey(Qt::SHIFT | Qt::Key_F6, [this] { goToOtherPane(); }); // backwards, which is the same with two
}

void frmManual::load()
{
    if (m_isLoaded)
        return;
    txtManual->load(m_page);
    listChapters();
    m_isLoaded = true;
}

void frmManual::listChapters()
{
    KeyedTreeModel& nodes = tvwChapter->nodes();
    const KeyedTreeModel::Rebuild rebuild(nodes);
    nodes.clear();
    for (const ManualText::Chapter& chapter : txtManual->chapters()) {
        // The title of the window, which follows the chapter's own, would need too much room.
        if (!nodes.contains(chapter.anchor))
            nodes.add({}, chapter.anchor, chapter.heading.section(u" 「"_s, 0, 0));
    }
}

void frmManual::showChapter(const QString& chapter, QWidget& asking)
{
    if (!session().files.fileExists(m_page)) {
        session().dialogs.messageBox(
            {.text =
                 u"機能仕様書のファイルが見つかりませんでした。\r\n「%1」\r\nQuillon をインストールし直してください。"_s
                     .arg(QDir::toNativeSeparators(m_page)),
             .title = titles::SystemOperation});
        unload();
        return;
    }
    if (&asking != this)
        m_asking = &asking;
    comeBefore(asking);
    load();
    txtManual->goTo(chapter);
    txtManual->setFocus(Qt::OtherFocusReason);
}

void frmManual::comeBefore(QWidget& asking)
{
    // A window that all others wait for lets only those act that belong to it.
    QWidget* const modal = QApplication::activeModalWidget();
    QWindow* const owner = modal != nullptr && &asking != this ? modal->window()->windowHandle() : nullptr;
    winId(); // makes the native window
    if (&asking != this && windowHandle()->transientParent() != owner) {
        hide(); // it takes effect only when a window appears
        windowHandle()->setTransientParent(owner);
    }
    showModeless();
}

void frmManual::goToOtherPane()
{
    QWidget* const other = tvwChapter->hasFocus() ? static_cast<QWidget*>(txtManual) : tvwChapter;
    other->setFocus(Qt::ShortcutFocusReason);
}

void frmManual::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        event->accept();
        if (event->isAutoRepeat())
            return;
        const QPointer<QWidget> asking = m_asking;
        handleEvent(session().reporting, u"Form_KeyPress"_s, [this] { unload(); });
        if (asking && asking->isVisible())
            asking->activateWindow();
        return;
    }
    FormWindow::keyPressEvent(event);
}

} // namespace quillon
