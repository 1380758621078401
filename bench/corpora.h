#pragma once

#include <QString>
#include <QStringList>

namespace quillon::corpus
{
struct Options;
}

namespace quillon::bench
{

/// The databases that are measured.
enum class Corpus {
    Default,        // 125,000 data, 2,000 categories
    Million,        // 1,000,000 data with little text
    Categories5000, // no data, that many categories
    Categories50000
};

/// Where the corpora are kept; those that are missing are made, which takes a while.
void prepareCorpora(const QString& folder);

/// The full name of a corpus. Needs `prepareCorpora`.
QString corpusPath(Corpus corpus);

/// A corpus in which everything grows with the number of items: for every item there is a link and a membership, for
/// every fifty a category. Two of a hundred are documents, which hold little more than their headings.
corpus::Options growingCorpus(int items);

/// The full name of the corpus with these options in a folder that exists; it is made when it is missing.
QString keptCorpus(const QString& folder, const corpus::Options& options);

} // namespace quillon::bench
