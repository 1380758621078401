#pragma once

#include "bench/quiet_program.h"

#include <QString>
#include <QStringView>

#include <benchmark/benchmark.h>

#include <array>
#include <functional>
#include <memory>
#include <vector>

namespace quillon
{
class RecordSet;
}

namespace quillon::bench
{

/// A text that is looked for in the usual corpus.
struct SearchString {
    enum class Occurrence { Frequent, Rare, Absent };

    QString text;
    Occurrence occurrence;
};

/// Strings of 1, 2, 3, 5 and 10 characters; of each length a frequent one, a rare one and one that is nowhere. The
/// longer ones that are nowhere consist of frequent characters.
const std::vector<SearchString>& searchStrings();

/// The program with the usual corpus open, and what its search window does.
class SearchedCorpus
{
public:
    SearchedCorpus();

    /// Opens the file again; the search then holds nothing in memory.
    void openAgain();
    /// Looks for a text in all three kinds and returns the number of hits, without listing them.
    std::size_t search(const QString& text);
    /// The hits of one kind.
    std::shared_ptr<RecordSet> hits(const std::shared_ptr<RecordSet>& kind, const QString& text);
    /// Searches once for every string and throws unless it occurs as often as it should.
    void checkStrings();

    Session& session() { return m_program.session(); }
    /// The folded names and texts that are searched. Needs a search.
    std::vector<QStringView> foldedTexts();
    /// Bytes that the search holds, by its own account. Needs a search.
    double bytesHeld();

private:
    template <class Visit> void forEachCopy(Visit&& visit);

    QuietProgram m_program;
};

/// By string, the fastest of the times that a search and its rival take.
struct SearchTimes {
    std::vector<double> searches;
    std::vector<double> rivals;
};

/// Searches for every string, so many times each, and lets the rival do its work for it once; each side goes first every
/// other time.
SearchTimes timesOf(benchmark::State& state, SearchedCorpus& corpus, const std::vector<SearchString>& strings,
                    int searchesPerRival, const std::function<void(const SearchString&)>& rival);

/// The statements that read the names and texts of all data.
inline constexpr std::array AllNamesAndTexts = {"SELECT Name, Explanation FROM Main",
                                                "SELECT Name, Explanation FROM RefDoc",
                                                "SELECT Name, Explanation FROM RefFile"};

} // namespace quillon::bench
