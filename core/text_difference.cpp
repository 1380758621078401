#include "core/text_difference.h"

#include <QStringList>
#include <QStringView>

#include <algorithm>
#include <utility>

namespace quillon
{

namespace
{

/// The lines of a text, each with its line feed, as parts of it.
std::vector<TextSpan> splitLines(const QString& text)
{
    std::vector<TextSpan> lines;
    for (qsizetype begin = 0; begin < text.size();) {
        const qsizetype feed = text.indexOf(u'\n', begin);
        const qsizetype end = feed < 0 ? text.size() : feed + 1;
        lines.push_back({.begin = begin, .length = end - begin});
        begin = end;
    }
    return lines;
}

/// A text in lines, of which some are looked at.
struct Side {
    explicit Side(const QString& whole) : text(whole), lines(splitLines(whole)), end(lines.size()) {}

    QStringView line(std::size_t number) const
    {
        return QStringView(text).sliced(lines[number].begin, lines[number].length);
    }
    std::size_t size() const { return end - begin; }
    /// From one line to before another.
    TextSpan span(std::size_t from, std::size_t to) const
    {
        if (from == to)
            return {.begin = from < lines.size() ? lines[from].begin : text.size(), .length = 0};
        return {.begin = lines[from].begin,
                .length = lines[to - 1].begin + lines[to - 1].length - lines[from].begin};
    }

    const QString& text;
    std::vector<TextSpan> lines;
    std::size_t begin = 0;
    std::size_t end;
};

/// Whether a place lies between the two halves of a character.
bool splitsCharacter(QStringView text, qsizetype place)
{
    return place > 0 && place < text.size() && text[place].isLowSurrogate() &&
           text[place - 1].isHighSurrogate();
}

class Comparison
{
public:
    Comparison(const QString& before, const QString& now) : m_before(before), m_now(now) {}

    TextDifference run()
    {
        while (m_before.size() > 0 && m_now.size() > 0 &&
               m_before.line(m_before.begin) == m_now.line(m_now.begin)) {
            ++m_before.begin;
            ++m_now.begin;
        }
        while (m_before.size() > 0 && m_now.size() > 0 &&
               m_before.line(m_before.end - 1) == m_now.line(m_now.end - 1)) {
            --m_before.end;
            --m_now.end;
        }
        constexpr std::size_t LargestTable = 1'000'000;
        if ((m_before.size() + 1) * (m_now.size() + 1) <= LargestTable)
            compareLines();
        else
            differ({m_before.begin, m_before.end}, {m_now.begin, m_now.end});
        return std::move(m_result);
    }

private:
    using Range = std::pair<std::size_t, std::size_t>; // lines

    /// Finds the longest sequence of lines that both have, and with it what lies between these.
    void compareLines()
    {
        const std::size_t rows = m_before.size();
        const std::size_t columns = m_now.size();
        std::vector<quint32> table((rows + 1) * (columns + 1));
        const auto longest = [&](std::size_t row, std::size_t column) -> quint32& {
            return table[row * (columns + 1) + column];
        };
        for (std::size_t row = rows; row-- > 0;) {
            for (std::size_t column = columns; column-- > 0;)
                longest(row, column) = areEqual(row, column)
                                           ? longest(row + 1, column + 1) + 1
                                           : std::max(longest(row + 1, column), longest(row, column + 1));
        }
        std::size_t row = 0;
        std::size_t column = 0;
        while (row < rows || column < columns) {
            const std::size_t fromRow = row;
            const std::size_t fromColumn = column;
            while (row < rows && column < columns && !areEqual(row, column))
                ++(longest(row + 1, column) >= longest(row, column + 1) ? row : column);
            if (row == rows || column == columns) {
                row = rows;
                column = columns;
            }
            differ({m_before.begin + fromRow, m_before.begin + row},
                   {m_now.begin + fromColumn, m_now.begin + column});
            while (row < rows && column < columns && areEqual(row, column)) {
                ++row;
                ++column;
            }
        }
    }
    bool areEqual(std::size_t row, std::size_t column) const
    {
        return m_before.line(m_before.begin + row) == m_now.line(m_now.begin + column);
    }

    void differ(Range before, Range now)
    {
        const std::size_t lines = before.second - before.first;
        if (lines > 0 && lines == now.second - now.first) {
            for (std::size_t i = 0; i < lines; ++i)
                narrow(m_before.span(before.first + i, before.first + i + 1),
                       m_now.span(now.first + i, now.first + i + 1));
        } else {
            narrow(m_before.span(before.first, before.second), m_now.span(now.first, now.second));
        }
    }

    /// Leaves out what both parts begin and end with.
    void narrow(TextSpan before, TextSpan now)
    {
        const QStringView a = QStringView(m_before.text).sliced(before.begin, before.length);
        const QStringView b = QStringView(m_now.text).sliced(now.begin, now.length);
        const qsizetype shorter = std::min(a.size(), b.size());
        qsizetype head = 0;
        while (head < shorter && a[head] == b[head])
            ++head;
        if (splitsCharacter(a, head) || splitsCharacter(b, head))
            --head;
        qsizetype tail = 0;
        while (tail < shorter - head && a[a.size() - 1 - tail] == b[b.size() - 1 - tail])
            ++tail;
        if (splitsCharacter(a, a.size() - tail) || splitsCharacter(b, b.size() - tail))
            --tail;
        append(m_result.before, {.begin = before.begin + head, .length = before.length - head - tail});
        append(m_result.now, {.begin = now.begin + head, .length = now.length - head - tail});
    }
    static void append(std::vector<TextSpan>& spans, const TextSpan& span)
    {
        if (span.length > 0)
            spans.push_back(span);
    }

    Side m_before;
    Side m_now;
    TextDifference m_result;
};

} // namespace

TextDifference differenceOf(const QString& before, const QString& now)
{
    return Comparison(before, now).run();
}

std::vector<int> linesOf(const QString& text, const std::vector<TextSpan>& spans)
{
    std::vector<int> lines;
    int line = 1;
    qsizetype place = 0;
    for (const TextSpan& span : spans) {
        for (; place < span.begin; ++place)
            line += text[place] == u'\n' ? 1 : 0;
        if (lines.empty() || lines.back() != line)
            lines.push_back(line);
        // What ends with a line feed does not touch the line after it.
        for (; place < span.begin + span.length; ++place) {
            if (text[place] != u'\n')
                continue;
            ++line;
            if (place + 1 < span.begin + span.length)
                lines.push_back(line);
        }
    }
    return lines;
}

} // namespace quillon
