#include "app/base/error.h"
#include "app/shell/japanese_interface.h"
#include "bench/corpora.h"
#include "bench/corpus/corpus.h"
#include "bench/everyday.h"
#include "bench/growth.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::bench;

namespace
{

/// The fastest of several rounds: what else the computer does can only add to a time.
double fastestSeconds(const Task& task)
{
    constexpr int FewestRounds = 5;
    constexpr int MostRounds = 25;
    constexpr qint64 EnoughMilliseconds = 4'000;
    QElapsedTimer all;
    all.start();
    double fastest = std::numeric_limits<double>::max();
    for (int round = 0; round < FewestRounds || (round < MostRounds && all.elapsed() < EnoughMilliseconds);
         ++round) {
        task.prepare();
        QElapsedTimer timer;
        timer.start();
        task.work();
        fastest = std::min(fastest, static_cast<double>(timer.nsecsElapsed()) / 1e9);
        task.check();
    }
    return fastest;
}

/// Waits until a new file is on the disk; else the first write of a measurement would wait for all of it.
bool reachDisk(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite) && fsync(file.handle()) == 0;
}

/// Measures all operations at one size, into the column of that size.
void measureAt(std::size_t column, const QString& corpora, std::vector<Growth>& operations)
{
    const int items = GrowthSizes[column];
    const QString kept = keptCorpus(corpora, growingCorpus(items));
    // Registering writes, and to a real disk.
    const QTemporaryDir folder(QDir(corpora).filePath(u"growth-XXXXXX"_s));
    const QString copy = folder.filePath(u"copy.mdb"_s);
    if (!QFile::copy(kept, copy) || !reachDisk(copy))
        throw std::runtime_error("a corpus cannot be copied");
    Everyday everyday(copy);
    const std::array tasks = {
        everyday.openingAndListing(),    everyday.sorting(),     everyday.buildingTree(),
        everyday.listingUncategorised(), everyday.firstSearch(), everyday.furtherSearch(),
        everyday.listingLinks(),         everyday.openingItem(), everyday.registeringItem()};
    operations.resize(tasks.size());
    for (std::size_t i = 0; i < operations.size(); ++i) {
        operations[i].operation = tasks[i].name;
        operations[i].seconds[column] = fastestSeconds(tasks[i]);
        std::printf("%-26s  %9s items  %s\n", qPrintable(tasks[i].name), qPrintable(shownCount(items)),
                    qPrintable(shownTime(operations[i].seconds[column])));
        std::fflush(stdout);
    }
}

void write(const QString& path, const QString& text)
{
    QFile file(path);
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        throw std::runtime_error("a result cannot be written");
}

} // namespace

int main(int argc, char* argv[])
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    setUpJapaneseInterface(application);

    QCommandLineParser parser;
    parser.setApplicationDescription(u"Measures how what people wait for grows with the number of items."_s);
    parser.addHelpOption();
    parser.addOptions(
        {{u"corpora"_s, u"Where the databases are kept that are measured."_s, u"folder"_s, u"corpus"_s},
         {u"table"_s, u"Writes the results to this file as a table."_s, u"file"_s},
         {u"picture"_s, u"Writes the results to this file as a picture in SVG."_s, u"file"_s}});
    parser.process(application);

    try {
        const QString corpora = parser.value(u"corpora"_s);
        QDir().mkpath(corpora);
        std::vector<Growth> operations;
        for (std::size_t column = 0; column < GrowthSizes.size(); ++column)
            measureAt(column, corpora, operations);
        if (parser.isSet(u"table"_s))
            write(parser.value(u"table"_s), growthTable(operations));
        if (parser.isSet(u"picture"_s))
            write(parser.value(u"picture"_s), growthPicture(operations));
    } catch (const Error& error) {
        std::fprintf(stderr, "quillon-growth: %s\n", qPrintable(error.description));
        return 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillon-growth: %s\n", error.what());
        return 1;
    }
    return 0;
}
