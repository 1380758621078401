#include "bench/growth.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

QString shownTime(double seconds)
{
    const auto shown = [](double value, const QString& unit) {
        return QString::number(value, 'f', value < 9.95 ? 1 : 0) + u' ' + unit;
    };
    if (seconds < 1e-3)
        return shown(seconds * 1e6, u"µs"_s);
    return seconds < 1 ? shown(seconds * 1e3, u"ms"_s) : shown(seconds, u"s"_s);
}

QString shownCount(int count)
{
    QString text = QString::number(count);
    for (qsizetype place = text.size() - 3; place > 0; place -= 3)
        text.insert(place, u',');
    return text;
}

QString growthTable(const std::vector<Growth>& operations)
{
    QString head = u"| Operation |"_s;
    QString line = u"|---|"_s;
    for (const int size : GrowthSizes) {
        head += u' ' + shownCount(size) + u" |"_s;
        line += u"---:|"_s;
    }
    QString text = head + u" Last tenfold |\n"_s + line + u"---:|\n"_s;
    for (const Growth& growth : operations) {
        text += u"| "_s + growth.operation;
        for (const double seconds : growth.seconds)
            text += u" | "_s + shownTime(seconds);
        text += u" | × %1 |\n"_s.arg(growth.lastFactor(), 0, 'f', 1);
    }
    return text;
}

} // namespace quillon::bench
