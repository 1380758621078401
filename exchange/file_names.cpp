#include "exchange/file_names.h"

#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

/// What stands for a character that no name may hold, or that means something in a link.
QChar allowed(QChar character)
{
    static const QString forbidden = u"/\\:*?\"<>|#^[]"_s;
    static const QString fullWidth = u"／＼：＊？＂＜＞｜＃＾［］"_s;
    const qsizetype at = forbidden.indexOf(character);
    if (at >= 0)
        return fullWidth[at];
    const bool isControl =
        character.unicode() < 0x20 || (character.unicode() >= 0x7F && character.unicode() < 0xA0);
    const bool breaks = character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
    return isControl || breaks || character.isSurrogate() ? QChar(u'_') : character;
}

bool isReserved(const QString& name)
{
    static const QStringList devices{u"con"_s, u"prn"_s, u"aux"_s, u"nul"_s};
    const QString stem = name.section(u'.', 0, 0).trimmed().toLower();
    const bool isNumbered =
        stem.size() == 4 && (stem.startsWith(u"com") || stem.startsWith(u"lpt")) && stem.back().isDigit();
    return devices.contains(stem) || isNumbered;
}

} // namespace

QString FileNames::next(const QString& name, const QString& ending)
{
    QString plain;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const bool isPair = name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate();
        if (isPair)
            plain += name.sliced(i++, 2);
        else
            plain += allowed(name[i]);
    }
    plain = plain.trimmed();
    while (plain.endsWith(u'.') || plain.endsWith(u' '))
        plain.chop(1);
    if (plain.isEmpty() || plain.startsWith(u'.') || isReserved(plain))
        plain.prepend(u'_');
    constexpr qsizetype Longest = 60; // at most 180 bytes
    if (plain.size() > Longest)
        plain.truncate(plain[Longest - 1].isHighSurrogate() ? Longest - 1 : Longest);
    QString candidate = plain;
    const auto key = [&] {
        return (candidate + ending).normalized(QString::NormalizationForm_KC).toCaseFolded();
    };
    for (int number = 2; m_taken.contains(key()); ++number)
        candidate = plain + u" (%1)"_s.arg(number);
    m_taken.insert(key());
    return candidate;
}

} // namespace quillon::exchange
