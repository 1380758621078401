#pragma once

#include "store/kept/place.h"

#include <QtGlobal>

#include <cstddef>
#include <vector>

namespace quillon::kept
{

/// What counts for whether a file of a history stays. Times in milliseconds since 1970.
struct HistoryFileFacts {
    qint64 lastWritten = 0;
    qint64 size = 0;
};

/// How long a history is kept.
struct HistoryRules {
    qint64 longest = qint64{366} * 24 * 60 * 60 * 1000;
    qint64 budget = qint64{512} * 1024 * 1024;   // bytes of all together
    qint64 always = qint64{24} * 60 * 60 * 1000; // as young as this a file stays whatever its size
};

/// Which files of a history go, as their positions: those that are too old, and the oldest where there are too many.
std::vector<std::size_t> historyToRemove(const std::vector<HistoryFileFacts>& files, qint64 now,
                                         const HistoryRules& rules = {});

/// Removes from a place what is too old or too much: files of the history, contents that neither the history nor a copy
/// names, and what programs that were killed have left half done. `now`: milliseconds since 1970.
void prune(const Place& place, qint64 now, const HistoryRules& rules = {});

} // namespace quillon::kept
