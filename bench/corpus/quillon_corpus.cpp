#include "app/base/error.h"
#include "bench/corpus/corpus.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>

#include <array>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace
{

int fail(const QString& reason)
{
    std::fprintf(stderr, "quillon-corpus: %s\n", qPrintable(reason));
    return 1;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    quillon::corpus::Options options;
    struct Count {
        QString name;
        QString description;
        int* value;
    };
    const auto counts = std::to_array<Count>({
        {u"definitions"_s, u"Definition data."_s, &options.definitions},
        {u"documents"_s, u"Reference documents."_s, &options.documents},
        {u"document-megabytes"_s, u"Text of all documents, in millions of bytes of UTF-8."_s,
         &options.documentMegabytes},
        {u"files"_s, u"File data."_s, &options.files},
        {u"categories"_s, u"Categories."_s, &options.categories},
        {u"links"_s, u"Links."_s, &options.links},
        {u"memberships"_s, u"Classifications of data."_s, &options.memberships},
    });

    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Writes a database full of made-up Japanese data; the same options give the same rows."_s);
    parser.addHelpOption();
    for (const Count& count : counts)
        parser.addOption({count.name, count.description, u"count"_s, QString::number(*count.value)});
    parser.addOption(
        {u"seed"_s, u"Another seed gives other data."_s, u"number"_s, QString::number(options.seed)});
    parser.addPositionalArgument(u"path"_s, u"The file to create."_s);
    parser.process(application);

    bool allNumbers = true;
    const auto read = [&](const QString& name, auto convert) {
        bool isNumber = false;
        const auto value = convert(parser.value(name), &isNumber);
        allNumbers = allNumbers && isNumber;
        return value;
    };
    for (const Count& count : counts)
        *count.value = read(count.name, [](const QString& text, bool* ok) { return text.toInt(ok); });
    options.seed = read(u"seed"_s, [](const QString& text, bool* ok) { return text.toULongLong(ok); });
    if (!allNumbers)
        return fail(u"an option is not a number"_s);
    if (const QString reason = quillon::corpus::refusal(options); !reason.isEmpty())
        return fail(reason);
    const QStringList paths = parser.positionalArguments();
    if (paths.size() != 1)
        return fail(u"name one file to create"_s);

    try {
        quillon::corpus::writeCorpus(options, QFileInfo(paths[0]).absoluteFilePath());
    } catch (const quillon::Error& error) {
        return fail(u"%1 (%2)"_s.arg(error.description).arg(error.number));
    }
    return 0;
}
