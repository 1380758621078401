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
    bool isDoubtful = false; // it holds much less than the newest good one before
};

/// How many copies stay, and for how long.
struct RetentionRules {
    int last = 3;                                   // the newest ones, whatever their age
    int days = 7;                                   // of each of the last days the newest
    int weeks = 5;                                  // of each of the last weeks the newest
    qint64 budget = qint64{2} * 1024 * 1024 * 1024; // bytes of all together
};

/// Which of the copies go, as their positions. The newest one that is not doubtful always stays, and so does the newest
/// of all, outside the budget where it is doubtful. A doubtful one takes no good one's place: they have as many of their
/// own, for a database may have been made small on purpose.
std::vector<std::size_t> copiesToRemove(const std::vector<CopyFacts>& copies, const QDateTime& now,
                                        const RetentionRules& rules = {});

} // namespace quillon::kept
