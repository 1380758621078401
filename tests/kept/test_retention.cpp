#include "store/kept/retention.h"

#include <QStringList>
#include <QTest>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::kept;

/// Which kept copies stay and which go.
class TestRetention : public QObject
{
    Q_OBJECT

    // A Saturday.
    static inline const QDateTime Now{QDate(2026, 1, 31), QTime(12, 0)};
    static constexpr qint64 Size = 1000;

    static CopyFacts at(const QString& time, bool isDoubtful = false)
    {
        return {.time = QDateTime::fromString(time, u"yyyy-MM-dd hh:mm"_s),
                .size = Size,
                .isDoubtful = isDoubtful};
    }
    /// Those that stay, as they are written.
    static QStringList staying(const QStringList& times, const RetentionRules& rules = {},
                               const QStringList& doubtful = {})
    {
        std::vector<CopyFacts> copies;
        for (const QString& time : times)
            copies.push_back(at(time, doubtful.contains(time)));
        const std::vector<std::size_t> removed = copiesToRemove(copies, Now, rules);
        QStringList left;
        for (std::size_t i = 0; i < copies.size(); ++i) {
            if (std::find(removed.begin(), removed.end(), i) == removed.end())
                left << times[static_cast<qsizetype>(i)];
        }
        return left;
    }

private Q_SLOTS:
    void theLastThreeStayHoweverOldTheyAre()
    {
        QCOMPARE(staying({u"2020-01-01 10:00"_s, u"2020-01-02 10:00"_s, u"2020-01-03 10:00"_s,
                          u"2020-01-04 10:00"_s}),
                 QStringList({u"2020-01-02 10:00"_s, u"2020-01-03 10:00"_s, u"2020-01-04 10:00"_s}));
    }

    void ofEachOfTheLastSevenDaysTheNewestStays()
    {
        QStringList all;
        QStringList newest;
        for (int day = 25; day <= 31; ++day) {
            for (const int hour : {8, 9, 10})
                all << u"2026-01-%1 %2:00"_s.arg(day).arg(hour, 2, 10, QChar(u'0'));
            newest << u"2026-01-%1 10:00"_s.arg(day);
        }
        newest << u"2026-01-31 08:00"_s << u"2026-01-31 09:00"_s; // of the last three
        newest.sort();
        QCOMPARE(staying(all), newest);
    }

    void ofEachOfTheLastWeeksTheNewestStays()
    {
        // The last of a week is a Sunday: 4, 11, 18 and 25 January.
        QStringList all;
        for (int day = 1; day <= 31; ++day)
            all << u"2026-01-%1 10:00"_s.arg(day, 2, 10, QChar(u'0'));
        QCOMPARE(staying(all),
                 QStringList({u"2026-01-04 10:00"_s, u"2026-01-11 10:00"_s, u"2026-01-18 10:00"_s,
                              u"2026-01-25 10:00"_s, u"2026-01-26 10:00"_s, u"2026-01-27 10:00"_s,
                              u"2026-01-28 10:00"_s, u"2026-01-29 10:00"_s, u"2026-01-30 10:00"_s,
                              u"2026-01-31 10:00"_s}));
    }

    void whatIsOlderThanAMonthGoes()
    {
        QCOMPARE(staying({u"2025-12-20 10:00"_s, u"2026-01-29 10:00"_s, u"2026-01-30 10:00"_s,
                          u"2026-01-31 10:00"_s}),
                 QStringList({u"2026-01-29 10:00"_s, u"2026-01-30 10:00"_s, u"2026-01-31 10:00"_s}));
    }

    void theOldestGoFirstWhereThereIsNoRoom()
    {
        QCOMPARE(staying({u"2026-01-29 10:00"_s, u"2026-01-30 10:00"_s, u"2026-01-31 10:00"_s},
                         {.last = 3, .days = 7, .weeks = 5, .budget = 2 * Size}),
                 QStringList({u"2026-01-30 10:00"_s, u"2026-01-31 10:00"_s}));
    }

    void theNewestGoodOneStaysWhateverRoomThereIs()
    {
        QCOMPARE(staying({u"2026-01-29 10:00"_s, u"2026-01-30 10:00"_s, u"2026-01-31 10:00"_s},
                         {.last = 3, .days = 7, .weeks = 5, .budget = 0}, {u"2026-01-30 10:00"_s}),
                 QStringList(u"2026-01-31 10:00"_s));
    }

    void aDoubtfulOneThatIsTheNewestStaysBesideAllGoodOnes()
    {
        // They fill the budget alone, and none of them goes for it; those before it do.
        const QStringList times{u"2026-01-28 10:00"_s, u"2026-01-29 10:00"_s, u"2026-01-30 10:00"_s,
                                u"2026-01-31 10:00"_s};
        QCOMPARE(staying(times, {.last = 3, .days = 7, .weeks = 5, .budget = 2 * Size}, times.mid(2)),
                 QStringList({u"2026-01-28 10:00"_s, u"2026-01-29 10:00"_s, u"2026-01-31 10:00"_s}));
    }

    void aDoubtfulOneTakesNoOthersPlace()
    {
        const QStringList times{u"2020-01-01 10:00"_s, u"2020-01-02 10:00"_s, u"2020-01-03 10:00"_s,
                                u"2026-01-31 10:00"_s, u"2026-01-31 11:00"_s};
        QCOMPARE(staying(times, {}, {u"2026-01-31 10:00"_s, u"2026-01-31 11:00"_s}), times);
    }

    void doubtfulOnesHavePlacesOfTheirOwn()
    {
        QStringList times{u"2019-01-01 10:00"_s};
        for (int day = 1; day <= 31; ++day)
            times << u"2026-01-%1 10:00"_s.arg(day, 2, 10, QChar(u'0'));
        QStringList left = times.mid(0, 1);
        for (const int day : {4, 11, 18, 25, 26, 27, 28, 29, 30, 31})
            left << u"2026-01-%1 10:00"_s.arg(day, 2, 10, QChar(u'0'));
        QCOMPARE(staying(times, {}, times.mid(1)), left);
    }

    void theOrderInWhichTheyAreGivenDoesNotMatter()
    {
        QCOMPARE(staying({u"2020-01-04 10:00"_s, u"2020-01-01 10:00"_s, u"2020-01-03 10:00"_s,
                          u"2020-01-02 10:00"_s}),
                 QStringList({u"2020-01-04 10:00"_s, u"2020-01-03 10:00"_s, u"2020-01-02 10:00"_s}));
    }

    void whereThereIsNoneNoneGoes() { QCOMPARE(staying({}), QStringList()); }
};

QTEST_GUILESS_MAIN(TestRetention)
#include "test_retention.moc"
