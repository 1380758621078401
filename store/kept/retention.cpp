#include "store/kept/retention.h"

#include <QDate>
#include <QSet>

#include <algorithm>
#include <numeric>

namespace quillon::kept
{

namespace
{

qint64 weekOf(const QDate& day)
{
    // Weeks begin on Monday, and so did the day with the number 0.
    return day.toJulianDay() / 7;
}

/// Which copies are among the last, or the newest of their day or week; doubtful ones have places of their own.
std::vector<bool> newestOfTheirTimes(const std::vector<CopyFacts>& copies,
                                     const std::vector<std::size_t>& newestFirst, const QDateTime& now,
                                     const RetentionRules& rules)
{
    std::vector<bool> stays(copies.size(), false);
    for (const bool doubtful : {false, true}) {
        int last = 0;
        QSet<qint64> days;
        QSet<qint64> weeks;
        for (const std::size_t i : newestFirst) {
            const CopyFacts& copy = copies[i];
            if (copy.isDoubtful != doubtful)
                continue;
            const QDate day = copy.time.date();
            const bool isRecentDay = day.daysTo(now.date()) < rules.days;
            const bool isRecentWeek = weekOf(now.date()) - weekOf(day) < rules.weeks;
            // The newest of a day and of a week is the first that is met. All of them are asked about, so that none of
            // the three has its place taken by a copy that stays for another reason.
            const bool isOneOfTheLast = last++ < rules.last;
            const bool isNewestOfDay = isRecentDay && !days.contains(day.toJulianDay());
            const bool isNewestOfWeek = isRecentWeek && !weeks.contains(weekOf(day));
            days.insert(day.toJulianDay());
            weeks.insert(weekOf(day));
            stays[i] = isNewestOfDay || isNewestOfWeek || isOneOfTheLast;
        }
    }
    return stays;
}

} // namespace

std::vector<std::size_t> copiesToRemove(const std::vector<CopyFacts>& copies, const QDateTime& now,
                                        const RetentionRules& rules)
{
    std::vector<std::size_t> newestFirst(copies.size());
    std::iota(newestFirst.begin(), newestFirst.end(), std::size_t{0});
    std::stable_sort(newestFirst.begin(), newestFirst.end(),
                     [&](std::size_t a, std::size_t b) { return copies[a].time > copies[b].time; });

    std::vector<bool> stays = newestOfTheirTimes(copies, newestFirst, now, rules);

    // Within the budget: first the doubtful ones go, then the oldest. A doubtful one that is the newest of all takes no
    // room of the good ones, but has its own: what it holds is all that the person has worked on last.
    const auto newestGood = std::find_if(newestFirst.begin(), newestFirst.end(),
                                         [&](std::size_t i) { return !copies[i].isDoubtful; });
    const auto isOutside = [&](std::size_t i) { return i == newestFirst.front() && copies[i].isDoubtful; };
    qint64 size = 0;
    for (std::size_t i = 0; i < copies.size(); ++i)
        size += stays[i] && !isOutside(i) ? copies[i].size : 0;
    for (const bool doubtful : {true, false}) {
        for (auto oldest = newestFirst.rbegin(); oldest != newestFirst.rend(); ++oldest) {
            const std::size_t i = *oldest;
            const bool mustStay = isOutside(i) || (newestGood != newestFirst.end() && i == *newestGood);
            if (size > rules.budget && stays[i] && copies[i].isDoubtful == doubtful && !mustStay) {
                stays[i] = false;
                size -= copies[i].size;
            }
        }
    }

    std::vector<std::size_t> removed;
    for (std::size_t i = 0; i < copies.size(); ++i) {
        if (!stays[i])
            removed.push_back(i);
    }
    return removed;
}

} // namespace quillon::kept
