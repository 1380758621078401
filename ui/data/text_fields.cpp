#include "ui/data/text_fields.h"

#include "app/base/platform/code_page.h"
#include "ui/widgets/one_line_input.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyle>
#include <QTextBlock>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// By how many points a key makes the text larger. The key of the plus is held with Shift or without, as on any keyboard
/// the character is typed; other keys with Shift, and AltGr, type other characters.
int pointsOfKey(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers held = event.modifiers() & ~Qt::KeypadModifier;
    if (event.key() == Qt::Key_Plus && (held & ~Qt::ShiftModifier) == Qt::ControlModifier)
        return 1;
    if (held != Qt::ControlModifier)
        return 0;
    switch (event.key()) {
    case Qt::Key_Semicolon: // where the plus lies on a Japanese keyboard
    case Qt::Key_Equal:     // and on an English one
        return 1;
    case Qt::Key_Minus:
        return -1;
    default:
        return 0;
    }
}

/// How many bytes a line takes, as a part of a sum that forgets the line when the document does. The sum is shared,
/// because a document may outlive its field by a moment.
class LineBytes : public QTextBlockUserData
{
public:
    LineBytes(std::shared_ptr<qsizetype> sum, qsizetype bytes) : m_sum(std::move(sum)), m_bytes(bytes)
    {
        *m_sum += m_bytes;
    }
    ~LineBytes() override { *m_sum -= m_bytes; }
    LineBytes(const LineBytes&) = delete;
    LineBytes& operator=(const LineBytes&) = delete;

private:
    std::shared_ptr<qsizetype> m_sum;
    qsizetype m_bytes;
};

} // namespace

void KeptText::keep(const QString& loaded, const QString& asShown)
{
    m_loaded = loaded;
    m_asShown = asShown;
}

qsizetype TextField::byteLength() const
{
    if (m_bytes == Unknown)
        m_bytes = countBytes();
    return m_bytes;
}

qsizetype TextField::countBytes() const
{
    return platform::byteLength932(content());
}

TextLine::TextLine(QWidget* parent) : QLineEdit(parent)
{
    keepInputOnOneLine(*this);
    connect(this, &QLineEdit::textChanged, this, [this] { textHasChanged(); });
}

void TextLine::load(const QString& text)
{
    setText(text);
    setCursorPosition(0); // the beginning of a long text is what one wants to see
    m_kept.keep(text, this->text());
    textHasChanged();
}

void TextLine::replace(const QString& text)
{
    selectAll();
    insert(text);
    setCursorPosition(0);
}

QString TextLine::content() const
{
    return m_kept.stands(text()) ? m_kept.loaded() : text();
}

TextArea::TextArea(QWidget* parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
    // A key changes a line or two of thousands.
    connect(document(), &QTextDocument::contentsChange, this,
            [this](int from, int, int added) { countLines(from, added); });
    connect(document(), &QTextDocument::contentsChanged, this, [this] {
        findArrival();
        textHasChanged();
    });
    // A new change makes it impossible to redo what was undone.
    connect(document(), &QTextDocument::undoCommandAdded, this, [this] { forgetUndoneArrivals(); });
}

void TextArea::load(const QString& text)
{
    m_replacing = true;
    setPlainText(text);
    m_arrivals = {arrivalOf(text)};
    m_current = 0;
    m_replacing = false;
    textHasChanged();
}

void TextArea::replace(const QString& text)
{
    m_replacing = true;
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    cursor.endEditBlock();
    forgetUndoneArrivals();
    m_arrivals.push_back(arrivalOf(text));
    m_arrivals.back().undoSteps = document()->availableUndoSteps();
    m_current = m_arrivals.size() - 1;
    m_replacing = false;
    textHasChanged();
    moveCursor(QTextCursor::Start); // the beginning of a long text is what one wants to see
}

TextArea::Arrival TextArea::arrivalOf(const QString& text) const
{
    Arrival arrival;
    arrival.kept.keep(text, shown());
    arrival.carriageReturns = text.contains(u"\r\n"_s);
    arrival.asShown = bytesShown(arrival.carriageReturns) == platform::byteLength932(text);
    return arrival;
}

void TextArea::findArrival()
{
    if (m_replacing)
        return;
    const int steps = document()->availableUndoSteps();
    m_current = 0;
    while (m_current + 1 < m_arrivals.size() && m_arrivals[m_current + 1].undoSteps <= steps)
        ++m_current;
}

QString TextArea::content() const
{
    QString text = shown();
    if (arrival().kept.stands(text))
        return arrival().kept.loaded();
    return arrival().carriageReturns ? text.replace(u'\n', u"\r\n"_s) : text;
}

QString TextArea::shown() const
{
    // Not toPlainText(): that turns no-break spaces and line separators into others.
    QString text = document()->toRawText();
    return text.replace(QChar(QChar::ParagraphSeparator), u'\n');
}

void TextArea::countLines(int from, int added)
{
    for (QTextBlock line = document()->findBlock(from); line.isValid() && line.position() <= from + added;
         line = line.next())
        line.setUserData(new LineBytes(m_bytesOfLines, platform::byteLength932(line.text())));
}

qsizetype TextArea::bytesShown(bool carriageReturns) const
{
    const qsizetype lineBreaks = document()->blockCount() - 1;
    return *m_bytesOfLines + lineBreaks * (carriageReturns ? 2 : 1);
}

qsizetype TextArea::countBytes() const
{
    return arrival().asShown ? bytesShown(arrival().carriageReturns) : TextField::countBytes();
}

QSize TextArea::sizeHint() const
{
    return sizeOf(40, 7);
}

QSize TextArea::minimumSizeHint() const
{
    return sizeOf(16, 3);
}

QSize TextArea::sizeOf(int characters, int lines) const
{
    // Not the font that the person has chosen for the text: the window would grow with it, where the text can scroll.
    const QFontMetrics metrics(parentWidget() != nullptr ? parentWidget()->font() : QApplication::font(this));
    const int margin = 2 * (frameWidth() + qRound(document()->documentMargin()));
    return {characters * metrics.horizontalAdvance(u"国"_s) + margin +
                style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this),
            lines * metrics.lineSpacing() + margin};
}

void TextArea::wheelEvent(QWheelEvent* event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QPlainTextEdit::wheelEvent(event);
        return;
    }
    event->accept();
    constexpr int Notch = 120;
    m_turned += event->angleDelta().y();
    const int notches = m_turned / Notch;
    m_turned -= notches * Notch;
    zoom(notches);
}

void TextArea::zoom(int points)
{
    constexpr double Smallest = 6;
    constexpr double Largest = 72;
    QFont larger = font();
    const double present = larger.pointSizeF() > 0 ? larger.pointSizeF() : QFontInfo(larger).pointSizeF();
    larger.setPointSizeF(std::clamp(present + points, Smallest, Largest));
    setFont(larger);
}

void TextArea::keyPressEvent(QKeyEvent* event)
{
    // Shift+Enter would insert a line separator, which looks like a line break and is stored as something else.
    if (event->matches(QKeySequence::InsertLineSeparator) && !isReadOnly()) {
        textCursor().insertBlock();
        ensureCursorVisible();
        event->accept();
        return;
    }
    if (const int points = pointsOfKey(*event); points != 0) {
        zoom(points);
        event->accept();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

} // namespace quillon
