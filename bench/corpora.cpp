#include "bench/corpora.h"

#include "bench/corpus/corpus.h"

#include <QDir>
#include <QFile>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

// To be raised whenever the corpus maker makes other rows of the same options.
constexpr int MakerVersion = 1;

QString& corpusFolder()
{
    static QString folder;
    return folder;
}

corpus::Options onlyCategories(int categories)
{
    return {.definitions = 0,
            .documents = 0,
            .documentMegabytes = 0,
            .files = 0,
            .categories = categories,
            .links = 0,
            .memberships = 0};
}

corpus::Options optionsOf(Corpus corpus)
{
    switch (corpus) {
    case Corpus::Million:
        return {.definitions = 950'000,
                .documents = 20'000,
                .documentMegabytes = 10,
                .files = 30'000,
                .categories = 2'000,
                .links = 150'000,
                .memberships = 120'000};
    case Corpus::Categories5000:
        return onlyCategories(5'000);
    case Corpus::Categories50000:
        return onlyCategories(50'000);
    case Corpus::Default:
        break;
    }
    return {};
}

QString nameOf(const corpus::Options& options)
{
    return u"corpus-v%1-%2-%3-%4-%5-%6-%7-%8-%9.mdb"_s.arg(MakerVersion)
        .arg(options.definitions)
        .arg(options.documents)
        .arg(options.documentMegabytes)
        .arg(options.files)
        .arg(options.categories)
        .arg(options.links)
        .arg(options.memberships)
        .arg(options.seed);
}

} // namespace

QString corpusPath(Corpus corpus)
{
    return QDir(corpusFolder()).absoluteFilePath(nameOf(optionsOf(corpus)));
}

corpus::Options growingCorpus(int items)
{
    const int twoPercent = items / 50;
    return {.definitions = items - 2 * twoPercent,
            .documents = twoPercent,
            .documentMegabytes = 0,
            .files = twoPercent,
            .categories = items / 50,
            .links = items,
            .memberships = items};
}

QString keptCorpus(const QString& folder, const corpus::Options& options)
{
    QString path = QDir(folder).absoluteFilePath(nameOf(options));
    if (QFile::exists(path))
        return path;
    std::fprintf(stderr, "making %s\n", qPrintable(path));
    // A maker that was interrupted leaves nothing that looks finished.
    const QString unfinished = path + u".unfinished"_s;
    for (const QString& rest : {unfinished, unfinished + u"-journal"_s})
        QFile::remove(rest);
    corpus::writeCorpus(options, unfinished);
    QFile::rename(unfinished, path);
    return path;
}

void prepareCorpora(const QString& folder)
{
    QDir().mkpath(folder);
    corpusFolder() = folder;
    for (const Corpus corpus :
         {Corpus::Default, Corpus::Million, Corpus::Categories5000, Corpus::Categories50000})
        keptCorpus(folder, optionsOf(corpus));
}

} // namespace quillon::bench
