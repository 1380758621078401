#include "ui/data/text_fields.h"

#include "app/base/platform/code_page.h"

#include <QKeyEvent>
#include <QScrollBar>
#include <QStyle>
#include <QTextBlock>

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
    connect(this, &QLineEdit::textChanged, this, [this] { textHasChanged(); });
}

void TextLine::load(const QString& text)
{
    setText(text);
    setCursorPosition(0); // the beginning of a long text is what one wants to see
    m_kept.keep(text, this->text());
    textHasChanged();
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
    connect(document(), &QTextDocument::contentsChanged, this, [this] { textHasChanged(); });
}

void TextArea::load(const QString& text)
{
    setPlainText(text);
    m_kept.keep(text, shown());
    textHasChanged();
    m_carriageReturns = text.contains(u"\r\n"_s);
    m_loadedAsShown = bytesShown() == platform::byteLength932(text);
}

QString TextArea::content() const
{
    QString text = shown();
    if (m_kept.stands(text))
        return m_kept.loaded();
    return m_carriageReturns ? text.replace(u'\n', u"\r\n"_s) : text;
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

qsizetype TextArea::bytesShown() const
{
    const qsizetype lineBreaks = document()->blockCount() - 1;
    return *m_bytesOfLines + lineBreaks * (m_carriageReturns ? 2 : 1);
}

qsizetype TextArea::countBytes() const
{
    return m_loadedAsShown ? bytesShown() : TextField::countBytes();
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
