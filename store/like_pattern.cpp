#include "store/like_pattern.h"

#include "store/text_fold.h"

#include <algorithm>
#include <utility>

namespace quillon
{

namespace
{

/// The code point at `position`, which moves behind it. A surrogate without its partner is a character of its own.
char32_t nextCharacter(QStringView text, qsizetype& position)
{
    const QChar unit = text[position++];
    if (unit.isHighSurrogate() && position < text.size() && text[position].isLowSurrogate())
        return QChar::surrogateToUcs4(unit, text[position++]);
    return unit.unicode();
}

std::u32string characters(QStringView text)
{
    std::u32string result;
    for (qsizetype position = 0; position < text.size();)
        result += nextCharacter(text, position);
    return result;
}

/// The characters of a text that are compared with those of another.
std::u32string comparable(QStringView text, LikePattern::Comparing comparing)
{
    return characters(comparing == LikePattern::Comparing::AsAReader ? foldedText(text) : text.toString());
}

/// The member of a list at `position`, which moves behind it: a kana and the voice mark after it are one to a reader.
char32_t nextMember(QStringView list, qsizetype& position, LikePattern::Comparing comparing)
{
    const qsizetype start = position;
    nextCharacter(list, position);
    std::u32string member = comparable(list.sliced(start, position - start), comparing);
    if (position < list.size()) {
        const std::u32string withMark = comparable(list.sliced(start, position + 1 - start), comparing);
        if (withMark.size() == 1) {
            ++position;
            member = withMark;
        }
    }
    return member.front();
}

} // namespace

bool LikePattern::Element::accepts(char32_t candidate) const
{
    switch (kind) {
    case Kind::Character:
        return candidate == character;
    case Kind::AnyCharacter:
        return true;
    case Kind::Digit:
        return candidate >= U'0' && candidate <= U'9';
    case Kind::List:
        return negated != std::any_of(ranges.begin(), ranges.end(), [candidate](const Range& range) {
                   return range.first <= candidate && candidate <= range.last;
               });
    case Kind::Run:
        break;
    }
    return false;
}

LikePattern::Element LikePattern::listElement(QStringView list, Comparing comparing)
{
    Element element{Element::Kind::List, 0, list.startsWith(u'!'), {}};
    if (element.negated)
        list = list.sliced(1);
    for (qsizetype position = 0; position < list.size();) {
        const char32_t first = nextMember(list, position, comparing);
        char32_t last = first;
        if (position + 1 < list.size() && list[position] == u'-')
            last = nextMember(list, ++position, comparing);
        // Backwards there is nothing in between. Which end is the lower one is asked of what a reader compares.
        if (first <= last)
            element.ranges.push_back({first, last});
    }
    return element;
}

LikePattern::LikePattern(const QString& pattern, Comparing comparing) : m_comparing(comparing)
{
    // Characters are compared in runs, for a kana and the voice mark after it are one character to a reader.
    QString run;
    const auto endRun = [&] {
        for (const char32_t character : comparable(std::exchange(run, QString()), comparing))
            m_elements.push_back({Element::Kind::Character, character, false, {}});
    };
    const auto add = [&](Element::Kind kind) {
        endRun();
        m_elements.push_back({kind, 0, false, {}});
    };

    const QStringView text(pattern);
    for (qsizetype position = 0; position < text.size();) {
        const QChar unit = text[position++];
        if (unit == u'*') {
            // Two runs of any length are one.
            if (!run.isEmpty() || m_elements.empty() || m_elements.back().kind != Element::Kind::Run)
                add(Element::Kind::Run);
        } else if (unit == u'?') {
            add(Element::Kind::AnyCharacter);
        } else if (unit == u'#') {
            add(Element::Kind::Digit);
        } else if (const qsizetype end = unit == u'[' ? text.indexOf(u']', position) : -1; end >= 0) {
            // An empty list stands for nothing at all.
            if (end > position) {
                endRun();
                m_elements.push_back(listElement(text.sliced(position, end - position), comparing));
            }
            position = end + 1;
        } else {
            run += unit;
        }
    }
    endRun();
}

bool LikePattern::matches(QStringView text) const
{
    return m_comparing == Comparing::AsAReader ? matchesComparable(foldedText(text))
                                               : matchesComparable(text);
}

bool LikePattern::matchesComparable(QStringView text) const
{
    constexpr auto None = static_cast<std::size_t>(-1);
    std::size_t element = 0;
    qsizetype position = 0;
    // Where to go on when the latest run has to take one character more. Earlier runs never need to.
    std::size_t afterRun = None;
    qsizetype runEnd = 0;
    while (position < text.size()) {
        if (element < m_elements.size() && m_elements[element].kind == Element::Kind::Run) {
            afterRun = ++element;
            runEnd = position;
            if (afterRun == m_elements.size())
                return true;
            continue;
        }
        qsizetype next = position;
        const char32_t character = nextCharacter(text, next);
        if (element < m_elements.size() && m_elements[element].accepts(character)) {
            ++element;
            position = next;
            continue;
        }
        if (afterRun == None)
            return false;
        nextCharacter(text, runEnd);
        position = runEnd;
        element = afterRun;
    }
    while (element < m_elements.size() && m_elements[element].kind == Element::Kind::Run)
        ++element;
    return element == m_elements.size();
}

} // namespace quillon
