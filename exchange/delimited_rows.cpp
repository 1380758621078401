#include "exchange/delimited_rows.h"

#include <QRegularExpression>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

// A field that is never closed would take the rest of the file.
constexpr qsizetype LongestField = 4'000'000;

} // namespace

void DelimitedRows::take(QStringView text)
{
    if (m_separator.isNull()) {
        m_firstLine += text;
        const bool isWhole =
            m_firstLine.contains(u'\n') || m_firstLine.contains(u'\r') || m_firstLine.size() > LongestField;
        if (!isWhole)
            return;
        const QString begun = std::exchange(m_firstLine, {});
        const QString line = begun.section(QRegularExpression(u"[\\r\\n]"_s), 0, 0);
        m_separator = line.contains(u'\t') ? u'\t' : u',';
        for (const QChar unit : begun)
            takeUnit(unit);
        return;
    }
    for (const QChar unit : text)
        takeUnit(unit);
}

void DelimitedRows::takeUnit(QChar unit)
{
    if (m_state == State::AfterReturn) {
        m_state = State::FieldBegins;
        if (unit == u'\n')
            return; // of the same line break
    }
    if (m_state == State::Quoted) {
        if (unit == u'"')
            m_state = State::QuoteInQuoted;
        else if (m_field.size() < LongestField)
            m_field += unit;
        else
            m_wrong = u"長すぎる項目があります。"_s;
        m_line += unit == u'\n' ? 1 : 0;
        return;
    }
    if (unit == u'"' && m_state == State::FieldBegins) {
        m_state = State::Quoted;
    } else if (unit == u'"' && m_state == State::QuoteInQuoted) {
        m_field += unit;
        m_state = State::Quoted;
    } else if (unit == m_separator) {
        endField();
    } else if (unit == u'\n' || unit == u'\r') {
        ++m_line;
        endRow();
        if (unit == u'\r')
            m_state = State::AfterReturn;
    } else {
        if (m_state == State::QuoteInQuoted)
            m_wrong = u"閉じた引用符の後に文字があります。"_s;
        m_state = State::Plain;
        m_field += unit;
    }
}

void DelimitedRows::endField()
{
    m_fields << std::exchange(m_field, {});
    m_state = State::FieldBegins;
}

void DelimitedRows::endRow()
{
    const bool isEmpty = m_fields.isEmpty() && m_field.isEmpty() && m_state == State::FieldBegins;
    endField();
    if (!isEmpty)
        m_visit(m_fields, m_rowBegan, m_wrong);
    m_fields.clear();
    m_wrong.clear();
    m_rowBegan = m_line;
}

void DelimitedRows::end()
{
    if (m_separator.isNull())
        take(u"\n"); // a first line that is the only one
    if (m_state == State::AfterReturn)
        m_state = State::FieldBegins;
    if (m_state == State::Quoted)
        m_wrong = u"引用符が閉じていません。"_s;
    endRow();
}

QString delimitedField(const QString& text, QChar separator)
{
    const bool isQuoted = text.contains(separator) || text.contains(u'"') || text.contains(u'\n') ||
                          text.contains(u'\r') || text.startsWith(u' ') || text.endsWith(u' ');
    return isQuoted ? u'"' + QString(text).replace(u"\""_s, u"\"\""_s) + u'"' : text;
}

} // namespace quillon::exchange
