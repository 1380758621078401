#include "exchange/neighbourhood.h"

#include "app/base/one_line.h"
#include "exchange/markup.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <set>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

// More than these nobody could look at.
constexpr std::array<std::size_t, 3> MostAtDistance = {1, 60, 240};

// All lengths in the units of the picture, which are pixels as long as nobody scales it.
constexpr int Margin = 20;
constexpr int BoxWidth = 220;
constexpr int LineHeight = 20;
constexpr int BoxGap = 10;
constexpr int ColumnGap = 130;
constexpr int LettersOfALine = 26; // of half width
constexpr int LinesOfAName = 3;

std::vector<std::size_t> partnersOf(const AllData::Datum& datum)
{
    std::vector<std::size_t> partners = datum.linksTo;
    partners.insert(partners.end(), datum.linkedFrom.begin(), datum.linkedFrom.end());
    std::sort(partners.begin(), partners.end());
    partners.erase(std::unique(partners.begin(), partners.end()), partners.end());
    return partners;
}

/// How many letters of half width a character takes the room of.
int roomOf(char32_t code)
{
    const bool isNarrow = code < 0x1100 || (code >= 0xFF61 && code <= 0xFF9F);
    return isNarrow ? 1 : 2;
}

/// A name in lines that fit into a box. What there is no room for is told by "…".
QStringList linesOf(const QString& name)
{
    QStringList lines(QString{});
    int room = 0;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const bool isPair = name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate();
        const char32_t code =
            isPair ? QChar::surrogateToUcs4(name[i], name[i + 1]) : static_cast<char32_t>(name[i].unicode());
        if (room + roomOf(code) > LettersOfALine) {
            if (lines.size() == LinesOfAName) {
                lines.last().chop(1);
                lines.last() += u'…';
                return lines;
            }
            lines << QString();
            room = 0;
        }
        lines.last() += name[i];
        if (isPair)
            lines.last() += name[++i];
        room += roomOf(code);
    }
    return lines;
}

struct Box {
    QStringList lines;
    int x = 0;
    int y = 0;
    int height = 0;
    QString fill;

    int middle() const { return y + height / 2; }
};

/// A light colour for each category, far from those of its neighbours.
QString colourOf(std::size_t category)
{
    static const std::array<QString, 12> colours = {u"#cfe3f7"_s, u"#fbe0c3"_s, u"#d5efcf"_s, u"#f6cfd6"_s,
                                                    u"#e3d5f2"_s, u"#fbf2b6"_s, u"#c8efea"_s, u"#ecd9c8"_s,
                                                    u"#f7d1ee"_s, u"#dfe7b8"_s, u"#c9d4f5"_s, u"#e2e2e2"_s};
    return colours.at(category % colours.size());
}

class Drawing
{
public:
    Drawing(const AllData& all, const Neighbourhood& neighbourhood) : m_all(all), m_hood(neighbourhood) {}

    QString svg()
    {
        colour();
        place();
        const int width = Margin * 2 + columns() * BoxWidth + (columns() - 1) * ColumnGap;
        QString body = legend();
        const QString title = m_all.data()[m_hood.members.front().position].name;
        QString picture =
            u"<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\" "
            u"viewBox=\"0 0 %1 %2\" font-family=\"'Noto Sans CJK JP','Hiragino Sans','Yu Gothic',"
            u"'Meiryo',sans-serif\" font-size=\"14\" lang=\"ja\">\n"_s.arg(width)
                .arg(m_height);
        picture += u"<title>"_s + escapedMarkup(title) +
                   u"</title>\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n"_s;
        for (const auto& [from, to] : m_hood.links)
            picture += line(from, to);
        for (std::size_t i = 0; i < m_boxes.size(); ++i)
            picture += box(i);
        return picture + body + u"</svg>\n"_s;
    }

private:
    const AllData::Datum& datum(std::size_t member) const
    {
        return m_all.data()[m_hood.members[member].position];
    }
    int columns() const { return m_hood.members.back().distance + 1; }

    /// Gives the categories that come up their colours, in the order of the tree.
    void colour()
    {
        for (std::size_t i = 0; i < m_hood.members.size(); ++i) {
            if (!datum(i).categories.empty())
                m_categories.insert(datum(i).categories.front());
        }
    }
    QString fillOf(std::size_t member) const
    {
        if (datum(member).categories.empty())
            return u"#ffffff"_s;
        const auto found = m_categories.find(datum(member).categories.front());
        return colourOf(static_cast<std::size_t>(std::distance(m_categories.begin(), found)));
    }

    /// Each distance is a column; a column stands in the middle of the picture's height.
    void place()
    {
        std::vector<int> heights(static_cast<std::size_t>(columns()), -BoxGap);
        for (std::size_t i = 0; i < m_hood.members.size(); ++i) {
            const int column = m_hood.members[i].distance;
            const QString name = datum(i).name.isEmpty() ? datum(i).identifier : onOneLine(datum(i).name);
            Box made{
                .lines = linesOf(name), .x = Margin + column * (BoxWidth + ColumnGap), .fill = fillOf(i)};
            made.height = static_cast<int>(made.lines.size()) * LineHeight + BoxGap;
            int& height = heights[static_cast<std::size_t>(column)];
            made.y = height + BoxGap;
            height = made.y + made.height;
            m_boxes.push_back(made);
        }
        const int highest = *std::max_element(heights.begin(), heights.end());
        for (std::size_t i = 0; i < m_boxes.size(); ++i)
            m_boxes[i].y +=
                Margin + (highest - heights[static_cast<std::size_t>(m_hood.members[i].distance)]) / 2;
        m_height = highest + 2 * Margin;
    }

    QString box(std::size_t member) const
    {
        const Box& at = m_boxes[member];
        QString drawn = u"<g><title>%1</title><rect x=\"%2\" y=\"%3\" width=\"%4\" height=\"%5\" rx=\"6\" "
                        u"fill=\"%6\" stroke=\"#444\" stroke-width=\"%7\"/>"_s.arg(
                            escapedMarkup(datum(member).name + u" ("_s + datum(member).identifier + u')'),
                            QString::number(at.x), QString::number(at.y), QString::number(BoxWidth),
                            QString::number(at.height), at.fill, member == 0 ? u"3"_s : u"1"_s);
        int y = at.y + BoxGap / 2 + LineHeight - 5;
        for (const QString& text : at.lines) {
            drawn +=
                u"<text x=\"%1\" y=\"%2\" text-anchor=\"middle\" fill=\"#111\">"_s.arg(at.x + BoxWidth / 2)
                    .arg(y) +
                escapedMarkup(text) + u"</text>"_s;
            y += LineHeight;
        }
        return drawn + u"</g>\n"_s;
    }

    QString line(std::size_t from, std::size_t to) const
    {
        const int near = m_hood.members[from].distance;
        const int far = m_hood.members[to].distance;
        const Box& a = m_boxes[near <= far ? from : to];
        const Box& b = m_boxes[near <= far ? to : from];
        const QString stroke = u"\" fill=\"none\" stroke=\"#888\"/>\n"_s;
        const int startX = a.x + BoxWidth;
        if (near != far) {
            const int middle = (startX + b.x) / 2;
            return u"<path d=\"M%1 %2C%3 %2 %3 %4 %5 %4"_s.arg(startX)
                       .arg(a.middle())
                       .arg(middle)
                       .arg(b.middle())
                       .arg(b.x) +
                   stroke;
        }
        // Two of one column are led to each other outside it.
        constexpr int Bow = 45;
        return u"<path d=\"M%1 %2C%3 %2 %3 %4 %1 %4"_s.arg(startX)
                   .arg(a.middle())
                   .arg(startX + Bow)
                   .arg(b.middle()) +
               stroke;
    }

    /// Tells the colours, below everything, and makes the room for that.
    QString legend()
    {
        QString drawn;
        const auto add = [&](const QString& mark, const QString& text) {
            drawn += mark + u"<text x=\"%1\" y=\"%2\" fill=\"#111\">"_s.arg(Margin + 24).arg(m_height - 5) +
                     escapedMarkup(text) + u"</text>\n"_s;
            m_height += LineHeight + 4;
        };
        std::size_t number = 0;
        for (const std::size_t category : m_categories)
            add(u"<rect x=\"%1\" y=\"%2\" width=\"16\" height=\"16\" fill=\"%3\" stroke=\"#444\"/>"_s.arg(
                    QString::number(Margin), QString::number(m_height - 18), colourOf(number++)),
                m_all.wayTo(m_all.categories()[category]).join(u" › "_s));
        if (m_hood.leftOut > 0)
            add({}, u"ほか %1 件"_s.arg(m_hood.leftOut));
        return drawn;
    }

    const AllData& m_all;
    const Neighbourhood& m_hood;
    std::vector<Box> m_boxes;           // by member
    std::set<std::size_t> m_categories; // that come up
    int m_height = 0;
};

} // namespace

Neighbourhood neighbourhoodOf(const AllData& all, std::size_t position)
{
    Neighbourhood hood;
    QHash<std::size_t, std::size_t> places; // in the list, by position
    std::array<std::size_t, 3> counts = {1, 0, 0};
    QHash<std::size_t, bool> leftOut;
    hood.members.push_back({.position = position, .distance = 0});
    places.insert(position, 0);
    for (std::size_t i = 0; i < hood.members.size(); ++i) {
        const Neighbourhood::Member member = hood.members[i];
        if (member.distance == 2)
            break;
        for (const std::size_t partner : partnersOf(all.data()[member.position])) {
            if (places.contains(partner) || leftOut.contains(partner))
                continue;
            std::size_t& count = counts.at(static_cast<std::size_t>(member.distance) + 1);
            if (count == MostAtDistance.at(static_cast<std::size_t>(member.distance) + 1)) {
                leftOut.insert(partner, true);
                continue;
            }
            ++count;
            places.insert(partner, hood.members.size());
            hood.members.push_back({.position = partner, .distance = member.distance + 1});
        }
    }
    hood.leftOut = static_cast<std::size_t>(leftOut.size());
    for (std::size_t i = 0; i < hood.members.size(); ++i) {
        if (hood.members[i].distance == 2)
            break; // what the farthest have among themselves is none of this datum's business
        for (const std::size_t partner : partnersOf(all.data()[hood.members[i].position])) {
            const auto place = places.constFind(partner);
            if (place != places.cend() && *place > i)
                hood.links.emplace_back(i, *place);
        }
    }
    return hood;
}

QString pictureOf(const AllData& all, const Neighbourhood& neighbourhood)
{
    return Drawing(all, neighbourhood).svg();
}

} // namespace quillon::exchange
