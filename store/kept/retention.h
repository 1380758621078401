#pragma once

#include <QDateTime>

#include <cstddef>
#include <vector>

namespace quillon::kept
{

/// What counts for whether a copy stays.
struct CopyFacts {
    QDateTime time;          // local
    qint64 size = 0;         // bytes
    bool isDoubtful = false; // it holds much less than the one before
};

/// How many copies stay, and for how long.
struct RetentionRules {
    int last = 3;                                   // the newest ones, whatever their age
    int days = 7;                                   // of each of the last days the newest
    int weeks = 5;                                  // of each of the last weeks the newest
    qint64 budget = qint64{2} * 1024 * 1024 * 1024; // bytes of all together
};

/// Which of the copies go, as their positions. The newest one that is not doubtful always stays. A doubtful one takes
/// no other's place, and goes as soon as it is neither among the last doubtful ones nor of the last days.
std::vector<std::size_t> copiesToRemove(const std::vector<CopyFacts>& copies, const QDateTime& now,
                                        const RetentionRules& rules = {});

} // namespace quillon::kept
