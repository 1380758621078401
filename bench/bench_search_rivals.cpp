#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/searched_corpus.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <array>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

// The rivals take so much longer that a few rounds of them must do.
constexpr int SearchesPerRival = 5;

/// The names and texts of the usual corpus in one file, beside the corpora: a name's line, then the lines of its text.
class TextFile
{
public:
    TextFile() : m_folder(QFileInfo(corpusPath(Corpus::Default)).dir().filePath(u"texts-XXXXXX"_s))
    {
        path = m_folder.filePath(u"texts"_s);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            throw std::runtime_error("the texts cannot be written");
        const BareDatabase database(corpusPath(Corpus::Default));
        for (const char* sql : AllNamesAndTexts) {
            BareStatement statement(database, sql);
            while (statement.step())
                file.write(statement.text(0).toUtf8() + '\n' + statement.text(1).toUtf8() + '\n');
        }
        if (!file.flush())
            throw std::runtime_error("the texts cannot be written");
    }

    QString path;

private:
    QTemporaryDir m_folder;
};

/// Lets ripgrep count the lines in which a text stands. It must find some exactly when the search does.
void ripgrep(const QString& text, const QString& path, bool expectsLines)
{
    QProcess process;
    process.start(u"rg"_s, {u"-F"_s, u"-c"_s, u"-e"_s, text, path}, QIODevice::ReadOnly);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        throw std::runtime_error("ripgrep did not run: Debian's package is ripgrep");
    const bool lines = process.readAllStandardOutput().toInt() > 0;
    if (lines != expectsLines || process.exitCode() != (lines ? 0 : 1))
        throw std::runtime_error("ripgrep and the search differ");
}

void againstRipgrep(benchmark::State& state)
{
    reportFailures(state, [&] {
        SearchedCorpus corpus;
        corpus.checkStrings();
        const TextFile file;
        const auto run = [&](const SearchString& string) {
            ripgrep(string.text, file.path, string.occurrence != SearchString::Occurrence::Absent);
        };
        run(searchStrings().front()); // brings the program and the file into the system's cache
        const SearchTimes times = timesOf(state, corpus, searchStrings(), SearchesPerRival, run);
        reportTimes(state,
                    {"Searching for a text, median of the same strings",
                     "ripgrep -F -c on the texts in one file", 0.5},
                    median(times.searches), median(times.rivals));
    });
}
BENCHMARK(againstRipgrep)->UseManualTime()->Iterations(3);

constexpr std::array AllWithText = {"SELECT rowid FROM Main WHERE Name LIKE ?1 OR Explanation LIKE ?1",
                                    "SELECT rowid FROM RefDoc WHERE Name LIKE ?1 OR Explanation LIKE ?1",
                                    "SELECT rowid FROM RefFile WHERE Name LIKE ?1 OR Explanation LIKE ?1"};

void againstLike(benchmark::State& state)
{
    reportFailures(state, [&] {
        SearchedCorpus corpus;
        corpus.checkStrings();
        const BareDatabase database(corpusPath(Corpus::Default));
        std::vector<SearchString> strings; // one that is frequent, one that is rare and one that is nowhere
        for (const SearchString& string : searchStrings()) {
            if (string.text.size() == 3)
                strings.push_back(string);
        }
        const SearchTimes times =
            timesOf(state, corpus, strings, SearchesPerRival, [&](const SearchString& string) {
                int hits = 0;
                for (const char* sql : AllWithText) {
                    BareStatement statement(database, sql);
                    statement.bind(1, u'%' + string.text + u'%');
                    hits += readAll(statement, 0);
                }
                if ((hits == 0) != (string.occurrence == SearchString::Occurrence::Absent))
                    throw std::runtime_error("LIKE and the search differ");
            });
        reportTimes(state,
                    {"Searching for a text, median of 3 strings",
                     "LIKE '%...%' in SQLite on the same columns", 0.066},
                    median(times.searches), median(times.rivals));
    });
}
BENCHMARK(againstLike)->UseManualTime()->Iterations(1);

} // namespace

} // namespace quillon::bench
