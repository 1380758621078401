#include "app/base/ports/dialogs.h"
#include "exchange/old_file.h"
#include "exchange/progress.h"
#include "store/keeper.h"
#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/wait_cursor.h"

#include <QDir>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

const QString Title = u"データベースコンバート処理"_s;
constexpr std::size_t MostShown = 8; // of the notes; more than that nobody reads in a box

/// Shows the rows of a long conversion on a progress bar.
class ShownProgress : public exchange::Progress
{
public:
    explicit ShownProgress(FillProgress& bar) : m_bar(bar) {}
    ~ShownProgress() override
    {
        if (m_isShown)
            m_bar.finish();
    }
    ShownProgress(const ShownProgress&) = delete;
    ShownProgress& operator=(const ShownProgress&) = delete;

    void at(qint64 done, qint64 whole) override
    {
        if (!m_isShown)
            m_bar.start(whole);
        m_isShown = true;
        for (; m_done < done; ++m_done)
            m_bar.advance();
    }

private:
    FillProgress& m_bar;
    bool m_isShown = false;
    qint64 m_done = 0;
};

/// The one file of the older engine that is dragged; nothing when it is anything else.
std::optional<QString> draggedOldFile(const QDropEvent& event)
{
    const QList<QUrl> urls = event.mimeData()->urls();
    if (urls.size() != 1 || !urls.front().isLocalFile())
        return std::nullopt;
    const QString path = QDir::toNativeSeparators(urls.front().toLocalFile());
    return exchange::isOldFile(path) ? std::optional(path) : std::nullopt;
}

} // namespace

std::optional<exchange::ConvertedFile> frmMainMenu::convertedCopy(const QString& path)
{
    if (session().dialogs.messageBox({.text = u"以前のデータベースエンジンのファイルです。\r\n"
                                              u"変換した写しを作成して展開します。"_s,
                                      .title = Title,
                                      .buttons = Buttons::OkCancel}) != Answer::Ok)
        return std::nullopt;
    std::optional<exchange::ConvertedFile> converted;
    // To the person this is a part of opening the file.
    guarded(session().reporting, u"OpenDbFile"_s, [&] {
        const WaitCursor cursor;
        ShownProgress progress(*m_progress);
        converted = exchange::convertOldFile(path, &progress);
        if (session().keeper != nullptr)
            session().keeper->databaseCreated(converted->path);
        converted->path = QDir::toNativeSeparators(converted->path);
    });
    return converted;
}

void frmMainMenu::tellWhatIsLost(const exchange::ConvertedFile& converted)
{
    const auto& notes = converted.report.notes;
    if (notes.empty())
        return;
    QString text = u"変換した写し「%1」には、元のファイルのとおりでないところがあります。"_s.arg(
        QFileInfo(converted.path).fileName());
    for (std::size_t i = 0; i < std::min(notes.size(), MostShown); ++i)
        text +=
            u"\r\n"_s + (notes[i].where.isEmpty() ? notes[i].text : notes[i].where + u": "_s + notes[i].text);
    if (notes.size() > MostShown) {
        text += u"\r\nほかに %1 件あります。"_s.arg(notes.size() - MostShown);
        const auto cannot = [&text](const Error& error) {
            text += u"\r\n全部の一覧を書き出すことはできませんでした。"_s + error.description;
        };
        guardedBy(cannot, [&] {
            const QString list = exchange::writeNotes(converted);
            text += u"\r\n全部の一覧を「%1」に書き出しました。"_s.arg(QFileInfo(list).fileName());
        });
    }
    session().dialogs.messageBox({.text = text, .title = Title});
}

void frmMainMenu::dragEnterEvent(QDragEnterEvent* event)
{
    // The file is looked at once, however far the mouse moves.
    m_takesDrag = draggedOldFile(*event).has_value();
    dragMoveEvent(event);
}

void frmMainMenu::dragMoveEvent(QDragMoveEvent* event)
{
    if (!m_takesDrag) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void frmMainMenu::dropEvent(QDropEvent* event)
{
    const auto path = draggedOldFile(*event);
    if (!path) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // The drag ends first: until then the other program waits, and there is a question to come.
    QMetaObject::invokeMethod(
        this,
        [this, path] {
            handleEvent(session().reporting, u"Form_OLEDragDrop"_s, [&] { openChosenFile(*path); });
        },
        Qt::QueuedConnection);
}

} // namespace quillon
