#include "exchange/json_text.h"

#include <QStringDecoder>

#include <limits>
#include <string_view>

namespace quillon::exchange
{

namespace
{

void appendEscape(QByteArray& json, char16_t unit)
{
    constexpr std::string_view Digits = "0123456789abcdef";
    json += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        json += Digits[static_cast<std::size_t>(unit >> shift & 0xF)];
}

/// The value of four hexadecimal digits, -1 when they are none.
int unitOf(QByteArrayView digits)
{
    int value = 0;
    for (const char digit : digits) {
        int of = -1;
        if (digit >= '0' && digit <= '9')
            of = digit - '0';
        else if (digit >= 'a' && digit <= 'f')
            of = digit - 'a' + 10;
        else if (digit >= 'A' && digit <= 'F')
            of = digit - 'A' + 10;
        if (of < 0)
            return -1;
        value = value * 16 + of;
    }
    return value;
}

char16_t unescaped(char letter)
{
    switch (letter) {
    case 'b':
        return u'\b';
    case 'f':
        return u'\f';
    case 'n':
        return u'\n';
    case 'r':
        return u'\r';
    case 't':
        return u'\t';
    case '"':
    case '\\':
    case '/':
        return static_cast<char16_t>(letter);
    default:
        return 0;
    }
}

/// What the letters behind a backslash stand for.
std::optional<char16_t> unitEscaped(QByteArrayView letters)
{
    if (letters.front() == 'u') {
        const int unit = letters.size() > 4 ? unitOf(letters.sliced(1, 4)) : -1;
        return unit < 0 ? std::nullopt : std::optional(static_cast<char16_t>(unit));
    }
    const char16_t unit = unescaped(letters.front());
    return unit == 0 ? std::nullopt : std::optional(unit);
}

void appendUtf8(QByteArray& json, char32_t code)
{
    const auto part = [&](unsigned shift) { return static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x800) {
        json += static_cast<char>(0xC0 | code >> 6);
    } else {
        if (code < 0x10000) {
            json += static_cast<char>(0xE0 | code >> 12);
        } else {
            json += static_cast<char>(0xF0 | code >> 18);
            json += part(12);
        }
        json += part(6);
    }
    json += part(0);
}

} // namespace

void appendJsonText(QByteArray& json, QStringView text)
{
    json += '"';
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i].unicode();
        switch (unit) {
        case u'"':
            json += "\\\"";
            continue;
        case u'\\':
            json += "\\\\";
            continue;
        case u'\n':
            json += "\\n";
            continue;
        case u'\r':
            json += "\\r";
            continue;
        case u'\t':
            json += "\\t";
            continue;
        case u'<':      // a script ends at the first "</script", whatever stands around it
        case u'\u2028': // old readers of scripts take these two for the end of a line
        case u'\u2029':
        case u'\uFEFF': // some drop a mark of the order of bytes wherever it stands
            appendEscape(json, unit);
            continue;
        default:
            break;
        }
        const bool isPair =
            QChar::isHighSurrogate(unit) && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (unit < u' ' || unit == 0x7F || (QChar::isSurrogate(unit) && !isPair)) {
            appendEscape(json, unit);
        } else if (unit < 0x7F) {
            json += static_cast<char>(unit);
        } else if (!isPair) {
            appendUtf8(json, unit);
        } else {
            appendUtf8(json, QChar::surrogateToUcs4(unit, text[i + 1].unicode()));
            ++i;
        }
    }
    json += '"';
}

void JsonReader::skipBlanks()
{
    while (!m_rest.isEmpty() && (m_rest.front() == ' ' || m_rest.front() == '\t' || m_rest.front() == '\n' ||
                                 m_rest.front() == '\r'))
        m_rest = m_rest.sliced(1);
}

bool JsonReader::skip(QByteArrayView token)
{
    skipBlanks();
    if (!m_rest.startsWith(token))
        return false;
    m_rest = m_rest.sliced(token.size());
    return true;
}

bool JsonReader::atEnd()
{
    skipBlanks();
    return m_rest.isEmpty();
}

std::optional<qint64> JsonReader::number()
{
    skipBlanks();
    qint64 value = 0;
    qsizetype digits = 0;
    while (digits < m_rest.size() && m_rest[digits] >= '0' && m_rest[digits] <= '9') {
        const int digit = m_rest[digits] - '0';
        if (value > (std::numeric_limits<qint64>::max() - digit) / 10)
            return std::nullopt;
        value = value * 10 + digit;
        ++digits;
    }
    if (digits == 0)
        return std::nullopt;
    m_rest = m_rest.sliced(digits);
    return value;
}

std::optional<QString> JsonReader::text()
{
    skipBlanks();
    if (!m_rest.startsWith('"'))
        return std::nullopt;
    QString text(QLatin1String("")); // an empty text is not null
    qsizetype plain = 1;             // where what stands for itself begins
    const auto takePlain = [&](qsizetype end) {
        if (end == plain)
            return true;
        QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
        text += QString(utf8.decode(m_rest.sliced(plain, end - plain)));
        return !utf8.hasError();
    };
    for (qsizetype i = 1; i < m_rest.size(); ++i) {
        const char byte = m_rest[i];
        if (byte == '"') {
            if (!takePlain(i))
                return std::nullopt;
            m_rest = m_rest.sliced(i + 1);
            return text;
        }
        if (static_cast<uchar>(byte) < 0x20)
            return std::nullopt;
        if (byte != '\\')
            continue;
        if (i + 1 >= m_rest.size() || !takePlain(i))
            return std::nullopt;
        const std::optional<char16_t> unit = unitEscaped(m_rest.sliced(i + 1));
        if (!unit)
            return std::nullopt;
        text += QChar(*unit);
        i += m_rest[i + 1] == 'u' ? 5 : 1;
        plain = i + 1;
    }
    return std::nullopt;
}

} // namespace quillon::exchange
