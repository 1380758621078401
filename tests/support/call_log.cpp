#include "tests/support/call_log.h"

#include <QDebug>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

namespace
{

/// The columns a text takes on a terminal: two for each full-width character.
qsizetype columns(const QString& text)
{
    constexpr ushort FirstWide = 0x1100;
    constexpr ushort FirstHalfWidthKatakana = 0xFF61;
    constexpr ushort LastHalfWidthKatakana = 0xFFDC;
    qsizetype count = text.size();
    for (const QChar unit : text) {
        const bool narrow = unit.unicode() < FirstWide || (unit.unicode() >= FirstHalfWidthKatakana &&
                                                           unit.unicode() <= LastHalfWidthKatakana);
        if (!narrow)
            ++count;
    }
    return count;
}

QString visible(const QString& line)
{
    return QString(line).replace(u'\r', u"\\r"_s).replace(u'\n', u"\\n"_s);
}

QString padded(const QString& text, qsizetype width)
{
    return text + QString(width - columns(text), u' ');
}

QString shownLine(const QStringList& lines, qsizetype at)
{
    return at < lines.size() ? lines[at] : u"(nothing)"_s;
}

} // namespace

void CallLog::note(const QString& line)
{
    m_log->lines << visible(line);
    if (m_log->look)
        m_log->look(m_log->lines.last());
}

QStringList CallLog::take()
{
    return std::exchange(m_log->lines, {});
}

QStringList CallLog::about(const QString& name) const
{
    QStringList found;
    for (const QString& line : std::as_const(m_log->lines)) {
        if (line == name || line.startsWith(name + u'.') || line.startsWith(name + u' '))
            found << line;
    }
    return found;
}

QString messageBoxCall(const QString& text)
{
    return u"messageBox "_s + visible(text);
}

QString sideBySide(const QStringList& actual, const QStringList& expected)
{
    const QString heading = u"actual"_s;
    qsizetype width = heading.size();
    for (const QString& line : actual)
        width = std::max(width, columns(line));
    QString text = u"   "_s + padded(heading, width) + u" | expected"_s;
    bool same = true;
    for (qsizetype at = 0; at < std::max(actual.size(), expected.size()); ++at) {
        const QString left = shownLine(actual, at);
        const QString right = shownLine(expected, at);
        const bool firstDifference = same && left != right;
        same = same && left == right;
        text += (firstDifference ? u"\n=> "_s : u"\n   "_s) + padded(left, std::max(width, columns(left))) +
                u" | "_s + right;
    }
    return text;
}

bool compareLines(const QStringList& actual, const QStringList& expected)
{
    if (actual == expected)
        return true;
    qWarning().noquote() << u"the calls differ\n"_s + sideBySide(actual, expected);
    return false;
}

} // namespace quillon::testing
