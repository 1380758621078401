#include "app/cli/columns.h"

#include "app/base/one_line.h"

#include <algorithm>
#include <array>

namespace quillon::cli
{

namespace
{

struct Range {
    char32_t first = 0;
    char32_t last = 0;
};

/// What takes two columns: the wide and full-width characters of Unicode, in blocks.
constexpr std::array WideCharacters = {
    Range{0x1100, 0x115F},   Range{0x2E80, 0x303E},   Range{0x3041, 0x33FF},   Range{0x3400, 0x4DBF},
    Range{0x4E00, 0x9FFF},   Range{0xA000, 0xA4CF},   Range{0xA960, 0xA97C},   Range{0xAC00, 0xD7A3},
    Range{0xF900, 0xFAFF},   Range{0xFE30, 0xFE6F},   Range{0xFF01, 0xFF60},   Range{0xFFE0, 0xFFE6},
    Range{0x1F300, 0x1F64F}, Range{0x1F680, 0x1F6FF}, Range{0x1F900, 0x1F9FF}, Range{0x20000, 0x3FFFD}};

int columnsOfCode(char32_t code)
{
    // Most of all characters, and long lists are made of them: letters, kana and the common kanji.
    constexpr char32_t FirstMark = 0x300;
    if (code < FirstMark)
        return 1;
    if ((code >= 0x3041 && code <= 0x3096) || (code >= 0x309B && code <= 0x9FFF))
        return 2;
    switch (QChar::category(code)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
        return 0;
    default:
        return std::any_of(WideCharacters.begin(), WideCharacters.end(),
                           [&](const Range& range) { return code >= range.first && code <= range.last; })
                   ? 2
                   : 1;
    }
}

/// Calls `visit` with each character and the units it takes, until that says no.
template <class Visit> void forEachCharacter(QStringView text, Visit&& visit)
{
    for (qsizetype at = 0; at < text.size();) {
        const bool isPair =
            text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        const char32_t code =
            isPair ? QChar::surrogateToUcs4(text[at], text[at + 1]) : char32_t{text[at].unicode()};
        const qsizetype units = isPair ? 2 : 1;
        if (!visit(code, units))
            return;
        at += units;
    }
}

bool steersTerminal(QChar character)
{
    const auto code = character.unicode();
    if ((code >= u' ' && code <= u'~') || (code >= 0x2070 && code < 0xD800))
        return false;
    // Whatever turns the direction of what follows is as misleading as what moves the cursor.
    return character.category() == QChar::Other_Control || (code >= 0x202A && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

} // namespace

int columnsOf(QStringView text)
{
    int columns = 0;
    forEachCharacter(text, [&](char32_t code, qsizetype) {
        columns += columnsOfCode(code);
        return true;
    });
    return columns;
}

QString onePrintedLine(QStringView text)
{
    QString line = onOneLine(text.toString());
    std::replace_if(line.begin(), line.end(), steersTerminal, QChar(QChar::ReplacementCharacter));
    return line;
}

QString printedLines(QStringView text)
{
    QString lines = text.toString();
    const auto isUnfit = [](QChar character) {
        return character != u'\n' && character != u'\t' && character != u'\r' && steersTerminal(character);
    };
    lines.remove(u'\r');
    std::replace_if(lines.begin(), lines.end(), isUnfit, QChar(QChar::ReplacementCharacter));
    return lines;
}

QString padded(const QString& text, int columns)
{
    return text + QString(std::max(0, columns - columnsOf(text)), u' ');
}

QString elided(const QString& text, int columns)
{
    if (columnsOf(text) <= columns)
        return text;
    qsizetype units = 0;
    int used = 1; // the sign of what is missing
    forEachCharacter(text, [&](char32_t code, qsizetype taken) {
        used += columnsOfCode(code);
        if (used > columns)
            return false;
        units += taken;
        return true;
    });
    return text.first(units) + QChar(u'…');
}

} // namespace quillon::cli
