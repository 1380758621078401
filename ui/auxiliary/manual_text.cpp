#include "ui/auxiliary/manual_text.h"

#include "ui/widgets/focus_colours.h"

#include <QEvent>
#include <QImage>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int ChapterLevel = 2; // of headings; the one above is the title of all

QString anchorIn(const QTextBlock& block)
{
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        const QStringList names = it.fragment().charFormat().anchorNames();
        if (!names.isEmpty())
            return names.front();
    }
    return {};
}

} // namespace

ManualText::ManualText(QWidget* parent) : QTextBrowser(parent)
{
    setOpenExternalLinks(false);
    // With a caret, at which a screen reader reads; links are gone through by the Tab key all the same.
    setTextInteractionFlags(Qt::TextBrowserInteraction | Qt::TextSelectableByKeyboard);
    constexpr int Rest = 100; // milliseconds
    m_later.setSingleShot(true);
    m_later.setInterval(Rest);
    connect(&m_later, &QTimer::timeout, this, [this] { fitPictures(); });
}

void ManualText::load(const QString& file)
{
    setSource(QUrl::fromLocalFile(file));
}

std::vector<ManualText::Chapter> ManualText::chapters() const
{
    std::vector<Chapter> found;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == ChapterLevel)
            found.push_back({.anchor = anchorIn(block), .heading = block.text()});
    }
    return found;
}

void ManualText::goTo(const QString& anchor)
{
    QUrl place = source();
    place.setFragment(anchor);
    setSource(place); // noted among the places that the person can go back to
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == ChapterLevel && anchorIn(block) == anchor) {
            setTextCursor(QTextCursor(block));
            break;
        }
    }
    scrollToAnchor(anchor); // to the upper edge, and not only into sight
}

QVariant ManualText::loadResource(int type, const QUrl& name)
{
    if (type == QTextDocument::StyleSheetResource)
        return QString::fromUtf8(styleSheet());
    if (type != QTextDocument::ImageResource)
        return QTextBrowser::loadResource(type, name);
    const QUrl place = source().resolved(name);
    QImage picture(place.toLocalFile());
    if (picture.isNull())
        return {};
    if (std::find(m_pictures.begin(), m_pictures.end(), name) == m_pictures.end())
        m_pictures.push_back(name);
    m_fittedTo = roomForPictures();
    if (picture.width() > m_fittedTo) {
        // Smoothly for the points that the screen has, which may be more than those that are counted.
        const auto points = static_cast<int>(m_fittedTo * devicePixelRatioF());
        if (picture.width() > points)
            picture = picture.scaledToWidth(points, Qt::SmoothTransformation);
        picture.setDevicePixelRatio(static_cast<double>(picture.width()) / m_fittedTo);
    }
    return picture;
}

int ManualText::roomForPictures() const
{
    // The scroll bar is there as soon as the page is.
    const int bar = verticalScrollBar()->isVisible() ? 0 : verticalScrollBar()->sizeHint().width();
    constexpr int Least = 200;
    return std::max(Least,
                    viewport()->width() - bar - static_cast<int>(2 * document()->documentMargin()) - 2);
}

void ManualText::fitPictures()
{
    if (roomForPictures() == m_fittedTo || m_pictures.empty())
        return;
    for (const QUrl& name : std::vector<QUrl>(m_pictures))
        document()->addResource(QTextDocument::ImageResource, source().resolved(name),
                                loadResource(QTextDocument::ImageResource, name));
    document()->markContentsDirty(0, document()->characterCount());
}

QByteArray ManualText::styleSheet() const
{
    const QString line = palette().color(QPalette::Mid).name();
    const QString shade = palette().color(QPalette::AlternateBase).name();
    const QString link = linkColour(palette()).name();
    return (u"table { border-collapse: collapse; margin-top: 6px; margin-bottom: 6px; }"
            u"td, th { border: 1px solid "_s +
            line +
            u"; padding: 4px; }"
            u"th { text-align: left; background-color: "_s +
            shade +
            u"; }"
            u"blockquote, pre { margin: 8px 24px; background-color: "_s +
            shade +
            u"; }"
            u"dt { font-weight: bold; }"
            u"h2 { margin-top: 36px; }"
            u"h3 { margin-top: 20px; }"
            u"a { color: "_s +
            link + u"; }"_s)
        .toUtf8();
}

void ManualText::setAnew()
{
    const int place = verticalScrollBar()->value();
    const int caret = textCursor().position();
    reload();
    QTextCursor cursor(document());
    cursor.setPosition(std::min(caret, document()->characterCount() - 1));
    setTextCursor(cursor);
    verticalScrollBar()->setValue(place);
}

void ManualText::changeEvent(QEvent* event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !source().isEmpty())
        setAnew();
}

void ManualText::resizeEvent(QResizeEvent* event)
{
    QTextBrowser::resizeEvent(event);
    m_later.start();
}

void ManualText::keyPressEvent(QKeyEvent* event)
{
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        switch (event->key()) {
        case Qt::Key_Plus:
        case Qt::Key_Semicolon: // where the plus lies on a Japanese keyboard
        case Qt::Key_Equal:     // and on an English one
            zoomIn();
            event->accept();
            return;
        case Qt::Key_Minus:
            zoomOut();
            event->accept();
            return;
        default:
            break;
        }
    }
    // The window decides about these.
    if (event->key() == Qt::Key_Escape) {
        event->ignore();
        return;
    }
    QTextBrowser::keyPressEvent(event);
}

bool ManualText::focusNextPrevChild(bool next)
{
    // The toolkit goes on to the next link from what is selected, and begins anew when nothing is.
    QTextCursor cursor = textCursor();
    if (!cursor.hasSelection()) {
        cursor.movePosition(next ? QTextCursor::NextCharacter : QTextCursor::PreviousCharacter,
                            QTextCursor::KeepAnchor);
        setTextCursor(cursor);
    }
    return QTextBrowser::focusNextPrevChild(next);
}

} // namespace quillon
