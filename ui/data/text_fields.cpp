#include "ui/data/text_fields.h"

#include "app/base/platform.h"

#include <QKeyEvent>
#include <QScrollBar>
#include <QStyle>
#include <QTextBlock>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void KeptText::keep(const QString& loaded, const QString& asShown)
{
    m_loaded = loaded;
    m_asShown = asShown;
}

qsizetype TextField::byteLength() const
{
    if (m_bytes == Unknown)
        m_bytes = platform::byteLength932(content());
    return m_bytes;
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
    connect(document(), &QTextDocument::contentsChanged, this, [this] { textHasChanged(); });
}

void TextArea::load(const QString& text)
{
    setPlainText(text);
    m_kept.keep(text, shown());
    textHasChanged();
    m_carriageReturns = text.contains(u"\r\n"_s);
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
