#include "app/base/error.h"
#include "app/shell/japanese_interface.h"
#include "bench/corpora.h"
#include "bench/result_table.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

int main(int argc, char* argv[])
{
    // Takes its own options out of the command line.
    benchmark::Initialize(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    quillon::setUpJapaneseInterface(application);

    QCommandLineParser parser;
    parser.setApplicationDescription(u"Measures the program against the least work there is."_s);
    parser.addHelpOption();
    parser.addOptions(
        {{u"corpora"_s, u"Where the databases are kept that are measured."_s, u"folder"_s, u"corpus"_s},
         {u"table"_s, u"Writes the results to this file, too."_s, u"file"_s}});
    parser.process(application);

    try {
        quillon::bench::prepareCorpora(parser.value(u"corpora"_s));
    } catch (const quillon::Error& error) {
        std::fprintf(stderr, "quillon-bench: %s\n", qPrintable(error.description));
        return 1;
    }
    quillon::bench::ResultTable table;
    benchmark::RunSpecifiedBenchmarks(&table);
    if (parser.isSet(u"table"_s) && !table.write(parser.value(u"table"_s))) {
        std::fprintf(stderr, "quillon-bench: the table cannot be written\n");
        return 1;
    }
    return table.failures() == 0 ? 0 : 1;
}
