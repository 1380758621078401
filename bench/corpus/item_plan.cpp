#include "bench/corpus/item_plan.h"

#include <QDate>

#include <algorithm>

namespace quillon::corpus
{

namespace
{

constexpr int MostPerDay = 999;
constexpr int UsualPerDay = 12;
constexpr int BusyPerDay = 600; // on average, when there are more data than days for them
constexpr int EnoughForAFullDay = 2000;

/// The date characters of every weekday from 1999 to 2025.
const std::vector<QString>& days()
{
    static const std::vector<QString> all = [] {
        std::vector<QString> dates;
        constexpr int Friday = 5;
        for (QDate date(1999, 1, 4); date <= QDate(2025, 12, 26); date = date.addDays(1)) {
            if (date.dayOfWeek() <= Friday)
                dates.push_back(date.toString(u"yyMMdd"));
        }
        return dates;
    }();
    return all;
}

} // namespace

int ItemPlan::capacity()
{
    return static_cast<int>(days().size()) * BusyPerDay;
}

ItemPlan::ItemPlan(QChar kind, int count, Random random) : m_kind(kind)
{
    m_items.reserve(static_cast<std::size_t>(count));
    const int all = static_cast<int>(days().size()) - 1; // the last day is set aside
    const int onLastDay = kind == u'M' && count >= EnoughForAFullDay ? FullDay : 0;
    int left = count - onLastDay;
    const int used = std::clamp(std::max(left / UsualPerDay, left / BusyPerDay + 1), 1, all);

    std::vector<int> weights;
    qint64 weightLeft = 0;
    for (int i = 0; i < used; ++i) {
        weights.push_back(random.between(1, random.chance(10) ? 60 : 15));
        weightLeft += weights.back();
    }
    for (int i = 0; i < used; ++i) {
        const int weight = weights[static_cast<std::size_t>(i)];
        const auto fair = static_cast<int>((qint64(left) * weight + weightLeft / 2) / weightLeft);
        const int least = std::max(0, left - (used - i - 1) * MostPerDay);
        const int numbers = std::clamp(fair, least, std::min(left, MostPerDay));
        addDay(static_cast<int>(qint64(i) * all / used), numbers);
        left -= numbers;
        weightLeft -= weight;
    }
    addDay(all, onLastDay);
}

void ItemPlan::addDay(int day, int numbers)
{
    for (int number = 1; number <= numbers; ++number)
        m_items.push_back({static_cast<quint16>(day), static_cast<quint16>(number)});
}

QString ItemPlan::identifier(int item) const
{
    const Item& place = m_items[static_cast<std::size_t>(item)];
    QString text = QString(m_kind) + u'-' + days()[place.day] + u'-';
    for (const int unit : {100, 10, 1})
        text += QChar(static_cast<char16_t>(u'0' + place.number / unit % 10));
    return text;
}

} // namespace quillon::corpus
