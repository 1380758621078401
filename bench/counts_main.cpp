#include "app/base/error.h"
#include "app/shell/japanese_interface.h"
#include "bench/corpora.h"
#include "bench/corpus/corpus.h"
#include "bench/everyday.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <valgrind/callgrind.h>

#include <cstdio>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::bench;

namespace
{

/// Does a task twice and has the instructions of the second time counted: the first one loads fonts and the like.
void count(Everyday& everyday, const Task& task)
{
    task.prepare();
    task.work();
    task.check();
    task.prepare();
    everyday.hideProgress();
    CALLGRIND_START_INSTRUMENTATION;
    task.work();
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS_AT(task.name.toUtf8().constData());
    task.check();
}

void countAll(const QString& corpora)
{
    constexpr int Items = 10'000;
    const QTemporaryDir folder;
    const QString copy = folder.filePath(u"copy.mdb"_s);
    if (!QFile::copy(keptCorpus(corpora, growingCorpus(Items)), copy))
        throw std::runtime_error("the corpus cannot be copied");
    Everyday everyday(copy);
    for (const Task& task : {everyday.openingAndListing(), everyday.sorting(), everyday.buildingTree(),
                             everyday.listingUncategorised(), everyday.listingNode(), everyday.firstSearch(),
                             everyday.furtherSearch(), everyday.listingLinks(), everyday.openingItem(),
                             everyday.registeringItem(), everyday.typingKey()})
        count(everyday, task);
}

} // namespace

int main(int argc, char* argv[])
{
    if (RUNNING_ON_VALGRIND == 0 || argc != 2) {
        std::fprintf(stderr, "Run this through bench/count-instructions.sh.\n");
        return 2;
    }
    QApplication application(argc, argv);
    setUpJapaneseInterface(application);
    // What blinks does so at any time.
    QApplication::setCursorFlashTime(0);
    try {
        countAll(QFile::decodeName(argv[1]));
    } catch (const Error& error) {
        std::fprintf(stderr, "quillon-counts: %s\n", qPrintable(error.description));
        return 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillon-counts: %s\n", error.what());
        return 1;
    }
    return 0;
}
