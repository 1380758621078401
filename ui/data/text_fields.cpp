#include "ui/data/text_fields.h"

#include "app/base/platform/code_page.h"
#include "ui/widgets/one_line_input.h"

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
    const QFontMetrics metrics = fontMetrics();
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
    constexpr double Smallest = 6; // points
    constexpr double Largest = 72;
    m_turned += event->angleDelta().y();
    const int notches = m_turned / Notch;
    m_turned -= notches * Notch;
    QFont larger = font();
    const double points = larger.pointSizeF() > 0 ? larger.pointSizeF() : QFontInfo(larger).pointSizeF();
    larger.setPointSizeF(std::clamp(points + notches, Smallest, Largest));
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
    QPlainTextEdit::keyPressEvent(event);
}

} // namespace quillon
