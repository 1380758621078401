#include "store/text_fold.h"

#include <array>

namespace quillon
{

namespace
{

constexpr char16_t VoicedMark = u'\u309B';
constexpr char16_t HalfVoicedMark = u'\u309C';

using Table = std::array<char16_t, 0x10000>;

/// One code unit as a reader compares it, without regard to its neighbours.
char16_t folded(char16_t unit)
{
    if (QChar::isSurrogate(unit))
        return unit;
    // Which way a dash or a tilde of code page 932 comes in depends on the table that converted it.
    switch (unit) {
    case u'\u2014':
        return u'\u2015';
    case u'\u301C':
        return u'~';
    case u'\u2016':
        return u'\u2225';
    case u'\u2212':
        return u'-';
    case u'\uFF9E':
    case u'\u3099':
        return VoicedMark;
    case u'\uFF9F':
    case u'\u309A':
        return HalfVoicedMark;
    default:
        break;
    }
    const QChar character(unit);
    const auto width = character.decompositionTag();
    if (width == QChar::Wide || width == QChar::Narrow) {
        const QString narrow = character.decomposition();
        if (narrow.size() == 1)
            unit = narrow.front().unicode();
    }
    unit = QChar(unit).toCaseFolded().unicode();
    const bool isHiragana =
        (unit >= u'\u3041' && unit <= u'\u3096') || unit == u'\u309D' || unit == u'\u309E';
    return isHiragana ? static_cast<char16_t>(unit + 0x60) : unit;
}

const Table& table()
{
    static const Table units = [] {
        Table result;
        for (std::size_t unit = 0; unit < result.size(); ++unit)
            result[unit] = folded(static_cast<char16_t>(unit));
        return result;
    }();
    return units;
}

/// The voiced form of a katakana, 0 when there is none.
char16_t voiced(char16_t kana)
{
    switch (kana) {
    case u'ウ':
        return u'ヴ';
    case u'ワ':
        return u'ヷ';
    case u'ヰ':
        return u'ヸ';
    case u'ヱ':
        return u'ヹ';
    case u'ヲ':
        return u'ヺ';
    case u'ヽ':
        return u'ヾ';
    default:
        break;
    }
    // Plain and voiced kana stand in turns here, and the small ツ between チ and ツ shifts the turn.
    const bool kaToTi = kana >= u'カ' && kana <= u'チ' && (kana - u'カ') % 2 == 0;
    const bool tuToTo = kana >= u'ツ' && kana <= u'ト' && (kana - u'ツ') % 2 == 0;
    const bool haToHo = kana >= u'ハ' && kana <= u'ホ' && (kana - u'ハ') % 3 == 0;
    return kaToTi || tuToTo || haToHo ? static_cast<char16_t>(kana + 1) : u'\0';
}

/// The half-voiced form of a katakana, 0 when there is none.
char16_t halfVoiced(char16_t kana)
{
    const bool haToHo = kana >= u'ハ' && kana <= u'ホ' && (kana - u'ハ') % 3 == 0;
    return haToHo ? static_cast<char16_t>(kana + 2) : u'\0';
}

/// Whether a mark of this unit belongs to the kana before it; a mark that stands for itself does not.
bool joinsItsKana(char16_t unit)
{
    return unit == u'\uFF9E' || unit == u'\uFF9F' || unit == u'\u3099' || unit == u'\u309A';
}

} // namespace

QString foldedText(QStringView text)
{
    QString result(text.size(), Qt::Uninitialized);
    result.truncate(foldInto(text, reinterpret_cast<char16_t*>(result.data())));
    return result;
}

qsizetype foldInto(QStringView text, char16_t* out)
{
    const Table& units = table();
    char16_t* const start = out;
    for (const QChar character : text) {
        const char16_t unit = units[character.unicode()];
        if ((unit == VoicedMark || unit == HalfVoicedMark) && joinsItsKana(character.unicode()) &&
            out != start) {
            const char16_t joined = unit == VoicedMark ? voiced(out[-1]) : halfVoiced(out[-1]);
            if (joined != 0) {
                out[-1] = joined;
                continue;
            }
        }
        *out++ = unit;
    }
    return out - start;
}

QStringView beginningThatFoldsAlone(QStringView text, qsizetype units)
{
    if (units >= text.size())
        return text;
    while (units < text.size() && joinsItsKana(text[units].unicode()))
        ++units;
    return text.first(units);
}

} // namespace quillon
