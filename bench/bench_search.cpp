#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/heap.h"
#include "bench/pair.h"
#include "bench/searched_corpus.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace quillon::bench
{

namespace
{

/// Reads every byte once and does next to nothing with it; the compiler makes vector instructions of it.
#ifdef __x86_64__
__attribute__((target_clones("avx2", "default")))
#endif
quint64
sumOf(const char16_t* units, qsizetype count)
{
    quint64 sum = 0;
    for (; count >= 4; units += 4, count -= 4) {
        quint64 four = 0;
        std::memcpy(&four, units, sizeof four);
        sum += four;
    }
    for (; count > 0; ++units, --count)
        sum += *units;
    return sum;
}

void readOnce(const std::vector<QStringView>& blocks)
{
    quint64 sum = 0;
    for (const QStringView block : blocks)
        sum += sumOf(block.utf16(), block.size());
    benchmark::DoNotOptimize(sum);
}

/// The searches beside readings of what they go through.
SearchTimes timesBesideReading(benchmark::State& state)
{
    SearchedCorpus corpus;
    corpus.checkStrings();
    const std::vector<QStringView> texts = corpus.foldedTexts();
    return timesOf(state, corpus, searchStrings(), 1, [&](const SearchString&) { readOnce(texts); });
}

void laterSearches(benchmark::State& state)
{
    reportFailures(state, [&] {
        const SearchTimes times = timesBesideReading(state);
        reportTimes(state,
                    {"Searching for a text, second and later search, median of 15 strings",
                     "reading the folded texts once from memory", 1.25},
                    median(times.searches), median(times.rivals));
    });
}
BENCHMARK(laterSearches)->UseManualTime()->Iterations(11);

void slowestSearch(benchmark::State& state)
{
    reportFailures(state, [&] {
        const SearchTimes times = timesBesideReading(state);
        reportTimes(state, {"The slowest of these searches", "the same reading", 2},
                    *std::max_element(times.searches.begin(), times.searches.end()), median(times.rivals));
    });
}
BENCHMARK(slowestSearch)->UseManualTime()->Iterations(11);

void firstSearch(benchmark::State& state)
{
    SearchedCorpus corpus;
    std::optional<BareDatabase> database;
    measure(state, {"The first search after opening", "reading all names and texts once through SQLite", 3},
            {.prepare = [&] { corpus.openAgain(); },
             .operation = [&] { corpus.search(searchStrings().front().text); },
             .prepareFloor = [&] { database.emplace(corpusPath(Corpus::Default)); },
             .floor =
                 [&] {
                     for (const char* sql : AllNamesAndTexts) {
                         BareStatement statement(*database, sql);
                         readAll(statement, 2);
                     }
                 }});
}
BENCHMARK(firstSearch)->UseManualTime()->Iterations(15);

double bytesInUtf8()
{
    const BareDatabase database(corpusPath(Corpus::Default));
    double bytes = 0;
    for (const char* sql : AllNamesAndTexts) {
        BareStatement statement(database, sql);
        while (statement.step())
            bytes +=
                static_cast<double>(statement.text(0).toUtf8().size() + statement.text(1).toUtf8().size());
    }
    return bytes;
}

void searchMemory(benchmark::State& state)
{
    reportFailures(state, [&] {
        SearchedCorpus corpus;
        corpus.search(searchStrings().front().text);
        reportBytes(state,
                    {"Memory held for searching, as it counts itself", "the names and texts in UTF-8", 0.9},
                    corpus.bytesHeld(), bytesInUtf8());
    });
}
BENCHMARK(searchMemory)->UseManualTime()->Iterations(1);

void searchHeap(benchmark::State& state)
{
    reportFailures(state, [&] {
        SearchedCorpus corpus;
        const double before = heapInUse();
        corpus.search(searchStrings().front().text);
        reportBytes(state, {"The same, as the heap counts it", "the same texts", 0.9}, heapInUse() - before,
                    bytesInUtf8());
    });
}
BENCHMARK(searchHeap)->UseManualTime()->Iterations(1);

} // namespace

} // namespace quillon::bench
