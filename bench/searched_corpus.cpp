#include "bench/searched_corpus.h"

#include "bench/corpora.h"
#include "bench/pair.h"
#include "store/database.h"
#include "store/filter_result.h"
#include "store/record_set.h"
#include "store/session.h"

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

const std::vector<SearchString>& searchStrings()
{
    using enum SearchString::Occurrence;
    static const std::vector<SearchString> strings = {{u"の"_s, Frequent},
                                                      {u"作"_s, Rare},
                                                      {u"龍"_s, Absent},
                                                      {u"こと"_s, Frequent},
                                                      {u"カ聴"_s, Rare},
                                                      {u"をを"_s, Absent},
                                                      {u"データ"_s, Frequent},
                                                      {u"入図の"_s, Rare},
                                                      {u"のはの"_s, Absent},
                                                      {u"については"_s, Frequent},
                                                      {u"テレビは光"_s, Rare},
                                                      {u"のはのはの"_s, Absent},
                                                      {u"であることがわかった"_s, Frequent},
                                                      {u"反応が知られている。"_s, Rare},
                                                      {u"のはのはのはのはのは"_s, Absent}};
    return strings;
}

SearchedCorpus::SearchedCorpus()
{
    openAgain();
}

void SearchedCorpus::openAgain()
{
    m_program.open(corpusPath(Corpus::Default));
}

std::shared_ptr<RecordSet> SearchedCorpus::hits(const std::shared_ptr<RecordSet>& kind, const QString& text)
{
    return GetFilterResult(session().reporting, kind,
                           u"Name Like '*"_s + text + u"*' OR Explanation Like '*"_s + text + u"*'"_s);
}

std::size_t SearchedCorpus::search(const QString& text)
{
    qint64 found = 0;
    for (const auto& kind : {session().RsMain, session().RsRefDoc, session().RsRefFile})
        found += hits(kind, text)->recordCount();
    return static_cast<std::size_t>(found);
}

void SearchedCorpus::checkStrings()
{
    constexpr std::size_t Many = 5'000;
    constexpr std::size_t Few = 1'250; // one in a hundred
    for (const SearchString& string : searchStrings()) {
        const std::size_t found = search(string.text);
        using enum SearchString::Occurrence;
        const bool asExpected = string.occurrence == Frequent ? found >= Many
                                : string.occurrence == Rare   ? found > 0 && found <= Few
                                                              : found == 0;
        if (!asExpected)
            throw std::runtime_error(
                (string.text + u" was found in "_s + QString::number(found) + u" data"_s).toStdString());
    }
}

template <class Visit> void SearchedCorpus::forEachCopy(Visit&& visit)
{
    for (const auto& kind : {session().RsMain, session().RsRefDoc, session().RsRefFile}) {
        const FoldedTexts* copy = session().OpenDb->textSearch().copyOf(kind->table().name);
        if (copy == nullptr)
            throw std::runtime_error("nothing has been searched");
        visit(*copy);
    }
}

std::vector<QStringView> SearchedCorpus::foldedTexts()
{
    std::vector<QStringView> blocks;
    forEachCopy([&](const FoldedTexts& copy) {
        copy.forEachBlock([&](QStringView block) { blocks.push_back(block); });
    });
    return blocks;
}

double SearchedCorpus::bytesHeld()
{
    double bytes = 0;
    forEachCopy([&](const FoldedTexts& copy) { bytes += static_cast<double>(copy.bytesHeld()); });
    return bytes;
}

SearchTimes timesOf(benchmark::State& state, SearchedCorpus& corpus, const std::vector<SearchString>& strings,
                    int searchesPerRival, const std::function<void(const SearchString&)>& rival)
{
    std::vector<std::vector<double>> searches(strings.size());
    std::vector<std::vector<double>> rivals(strings.size());
    std::size_t turn = 0;
    for ([[maybe_unused]] auto round : state) {
        for (std::size_t i = 0; i < strings.size(); ++i) {
            const bool rivalFirst = turn++ % 2 == 1;
            if (rivalFirst)
                rivals[i].push_back(secondsFor([&] { rival(strings[i]); }));
            // A rival that takes seconds leaves the texts idle, and the system may take their memory away meanwhile.
            corpus.search(strings[i].text);
            std::vector<double> together;
            together.reserve(static_cast<std::size_t>(searchesPerRival));
            for (int search = 0; search < searchesPerRival; ++search)
                together.push_back(secondsFor([&] { corpus.search(strings[i].text); }));
            searches[i].push_back(median(together)); // as many rounds as the rival has
            if (!rivalFirst)
                rivals[i].push_back(secondsFor([&] { rival(strings[i]); }));
        }
        state.SetIterationTime(searches.back().back());
    }
    SearchTimes times;
    for (std::size_t i = 0; i < strings.size(); ++i) {
        times.searches.push_back(fastest(searches[i]));
        times.rivals.push_back(fastest(rivals[i]));
    }
    return times;
}

} // namespace quillon::bench
