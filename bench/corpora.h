#pragma once

#include <QString>
#include <QStringList>

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

} // namespace quillon::bench
