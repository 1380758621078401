#include "bench/growth.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

constexpr double Width = 850;
constexpr double Height = 580;
constexpr double Left = 84;
constexpr double Right = 560;
constexpr double Top = 70;
constexpr double Bottom = 510;
constexpr double LabelLeft = 584;
constexpr double LabelDistance = 19;

// Of middling lightness: each stands out from white and from near black.
constexpr std::array Colours = {"#2f81f7", "#d1242f", "#1a8a3c", "#b08000", "#8250df",
                                "#c2388b", "#0e8a8a", "#c4560a", "#6e7781"};

const QString Style = u"<style>\n"
                      u"text { font: 13px sans-serif; fill: #1f2328; }\n"
                      u".title { font-size: 16px; font-weight: bold; }\n"
                      u".grid { stroke: #8c959f; stroke-opacity: 0.4; }\n"
                      u".proportion { stroke: #8c959f; stroke-opacity: 0.55; stroke-dasharray: 3 5; }\n"
                      u".line { fill: none; stroke-width: 2; }\n"
                      u".lead { stroke-opacity: 0.7; }\n"
                      u"@media (prefers-color-scheme: dark) { text { fill: #e6edf3; } }\n"
                      u"</style>\n"_s;

QString number(double value)
{
    return QString::number(value, 'f', 1);
}

/// The places of values on the picture.
class Axes
{
public:
    explicit Axes(const std::vector<Growth>& operations)
    {
        double least = operations.front().seconds.front();
        double most = least;
        for (const Growth& growth : operations) {
            const auto [low, high] = std::minmax_element(growth.seconds.begin(), growth.seconds.end());
            least = std::min(least, *low);
            most = std::max(most, *high);
        }
        lowest = static_cast<int>(std::floor(std::log10(least)));
        highest = std::max(lowest + 1, static_cast<int>(std::ceil(std::log10(most))));
    }

    static double x(double items)
    {
        const double first = std::log10(GrowthSizes.front());
        const double last = std::log10(GrowthSizes.back());
        return Left + (std::log10(items) - first) / (last - first) * (Right - Left);
    }
    double y(double seconds) const
    {
        return Bottom - (std::log10(seconds) - lowest) / (highest - lowest) * (Bottom - Top);
    }

    int lowest = 0; // powers of ten
    int highest = 0;
};

QString straight(const char* kind, double x1, double y1, double x2, double y2, const QString& more = {})
{
    return u"<line class=\"%1\" x1=\"%2\" y1=\"%3\" x2=\"%4\" y2=\"%5\"%6/>\n"_s.arg(
        QLatin1StringView(kind), number(x1), number(y1), number(x2), number(y2), more);
}

QString writing(double x, double y, const QString& text, const QString& more = {})
{
    return u"<text x=\"%1\" y=\"%2\"%3>%4</text>\n"_s.arg(number(x), number(y), more, text);
}

QString grid(const Axes& axes)
{
    QString picture;
    for (const int size : GrowthSizes) {
        const double x = Axes::x(size);
        picture += straight("grid", x, Top, x, Bottom);
        picture += writing(x, Bottom + 20, shownCount(size), u" text-anchor=\"middle\""_s);
    }
    for (int power = axes.lowest; power <= axes.highest; ++power) {
        const double seconds = std::pow(10, power);
        picture += straight("grid", Left, axes.y(seconds), Right, axes.y(seconds));
        // A whole number of whatever unit it is shown in.
        const QString text = shownTime(seconds * 1.000001).replace(u".0 "_s, u" "_s);
        picture += writing(Left - 8, axes.y(seconds) + 4, text, u" text-anchor=\"end\""_s);
    }
    // What grows in proportion rises by as many powers of ten as the number of items; only the part inside is drawn.
    const double rise = std::log10(double(GrowthSizes.back()) / GrowthSizes.front());
    const auto x = [](double power) { return Axes::x(GrowthSizes.front() * std::pow(10, power)); };
    for (int start = axes.lowest - 1; start < axes.highest; ++start) {
        const double from = std::max(0, axes.lowest - start);
        const double to = std::min<double>(rise, axes.highest - start);
        picture += straight("proportion", x(from), axes.y(std::pow(10, start + from)), x(to),
                            axes.y(std::pow(10, start + to)));
    }
    picture +=
        writing((Left + Right) / 2, Bottom + 46, u"Items in the database"_s, u" text-anchor=\"middle\""_s);
    picture += writing(0, 0, u"Time until painted"_s,
                       u" text-anchor=\"middle\" transform=\"translate(20 %1) rotate(-90)\""_s.arg(
                           number((Top + Bottom) / 2)));
    return picture;
}

/// Where the labels of lines go that end at these heights, which ascend: as near to them as labels may stand to one
/// another. Those that would touch are centred on the ends of their lines.
std::vector<double> labelHeights(const std::vector<double>& ends)
{
    struct Group {
        double sum;
        int labels;
        double first() const { return sum / labels; }
    };
    std::vector<Group> groups;
    for (std::size_t i = 0; i < ends.size(); ++i) {
        // Less its place in the row of labels, so that those of a group have one height.
        groups.push_back({ends[i] - static_cast<double>(i) * LabelDistance, 1});
        while (groups.size() > 1 && groups.back().first() < groups[groups.size() - 2].first()) {
            const Group last = groups.back();
            groups.pop_back();
            groups.back().sum += last.sum;
            groups.back().labels += last.labels;
        }
    }
    std::vector<double> heights;
    for (const Group& group : groups) {
        for (int label = 0; label < group.labels; ++label)
            heights.push_back(group.first() + static_cast<double>(heights.size()) * LabelDistance);
    }
    return heights;
}

} // namespace

QString growthPicture(std::vector<Growth> operations)
{
    const Axes axes(operations);
    std::stable_sort(operations.begin(), operations.end(), [](const Growth& one, const Growth& other) {
        return one.seconds.back() > other.seconds.back();
    });
    std::vector<double> ends;
    ends.reserve(operations.size());
    for (const Growth& growth : operations)
        ends.push_back(axes.y(growth.seconds.back()));
    const std::vector<double> labels = labelHeights(ends);

    QString lines;
    QString texts;
    for (std::size_t i = 0; i < operations.size(); ++i) {
        const QString colour = QLatin1StringView(Colours[i % Colours.size()]);
        QStringList points;
        for (std::size_t column = 0; column < GrowthSizes.size(); ++column) {
            const QString x = number(Axes::x(GrowthSizes[column]));
            const QString y = number(axes.y(operations[i].seconds[column]));
            points << x + u',' + y;
            lines += u"<circle cx=\"%1\" cy=\"%2\" r=\"3.5\" fill=\"%3\"/>\n"_s.arg(x, y, colour);
        }
        lines += u"<polyline class=\"line\" stroke=\"%1\" points=\"%2\"/>\n"_s.arg(colour, points.join(u' '));
        lines +=
            straight("lead", Right + 5, ends[i], LabelLeft - 5, labels[i], u" stroke=\"%1\""_s.arg(colour));
        texts += writing(LabelLeft, labels[i] + 4,
                         operations[i].operation + u", "_s + shownTime(operations[i].seconds.back()));
    }
    return u"<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %1 %2\" role=\"img\" "
           u"aria-labelledby=\"name\">\n"
           u"<title id=\"name\">How long operations take with 10,000 to 1,000,000 items</title>\n"_s
               .arg(Width)
               .arg(Height) +
           Style +
           u"<text class=\"title\" x=\"%1\" y=\"28\">Growth with the number of items</text>\n"_s.arg(
               number(Left)) +
           writing(Left, 50, u"Broken lines: in proportion to the number of items"_s) + grid(axes) + lines +
           texts + u"</svg>\n"_s;
}

} // namespace quillon::bench
