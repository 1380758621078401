#pragma once

#include "bench/corpus/random.h"

#include <QString>

#include <vector>

namespace quillon::corpus
{

/// Makes the texts of the corpus. What comes out depends on nothing but the numbers put in; every text fits the data
/// windows: names and files' names 24 full-width characters, definitions 126, documents 31,999.
class TextMaker
{
public:
    TextMaker();

    QString definitionName(Random& random) const;
    static QString documentName(Random& random);
    static QString fileName(Random& random);
    static QString categoryName(Random& random);
    QString definition(Random& random) const;
    /// A document of about `bytes` bytes of UTF-8: a heading, then paragraphs; lines end in CR LF.
    QString document(Random& random, const QString& name, qint64 bytes) const;

private:
    const QString& noun(Random& random) const;
    static QString term(Random& random);
    void appendPattern(Random& random, const QString& pattern, QString& text) const;

    std::vector<QString> m_nouns;     // by rank, the most frequent first
    std::vector<quint32> m_frequency; // the sum of the frequencies up to and including each rank
};

/// Bytes of a text of the corpus in code page 932, which has all its characters.
qsizetype bytes932(QStringView text);
/// Bytes of a text in UTF-8.
qsizetype bytesUtf8(QStringView text);

} // namespace quillon::corpus
