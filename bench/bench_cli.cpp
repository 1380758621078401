#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/searched_corpus.h"
#include "store/record_set.h"
#include "store/session.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

/// Runs a program to its end; what it writes goes into `output`.
void runProgram(const QByteArray& program, const QList<QByteArray>& words, const QByteArray& output)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.constData(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    QList<QByteArray> own =
        QList<QByteArray>{program} + words; // the system's interface asks for writable words
    std::vector<char*> all;
    for (QByteArray& word : own)
        all.push_back(word.data());
    all.push_back(nullptr);
    pid_t child = 0;
    const int failure = posix_spawnp(&child, program.constData(), &actions, nullptr, all.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (failure != 0 || waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("a program could not be run: " + program.toStdString());
}

/// The command line program beside the bare one of the database engine.
class CommandLine
{
public:
    explicit CommandLine(Corpus corpus)
        : m_database(corpusPath(corpus).toLocal8Bit()), m_output(m_folder.filePath(u"output"_s).toLocal8Bit())
    {
        qputenv("QUILLON_COPIES", "off");
    }

    void run(const QList<QByteArray>& words) const
    {
        const QByteArray program =
            QDir(QCoreApplication::applicationDirPath()).filePath(u"quillon-cli"_s).toLocal8Bit();
        runProgram(program, QList<QByteArray>{"--database", m_database} + words, m_output);
    }
    void runBare(const QByteArray& sql) const { runProgram("sqlite3", {m_database, sql}, m_output); }

private:
    QTemporaryDir m_folder;
    QByteArray m_database;
    QByteArray m_output;
};

void showItem(benchmark::State& state)
{
    const CommandLine line(Corpus::Default);
    SearchedCorpus corpus;
    QString identifier;
    corpus.hits(corpus.session().RsRefDoc, searchStrings().front().text)
        ->forEachName([&](QStringView, QStringView found) { identifier = found.toString(); });
    const QByteArray quoted = '\'' + identifier.toUtf8() + '\'';
    measure(state,
            {"quillon-cli show in 125,000 items, from start to end", "sqlite3 with the same questions", 3},
            {.prepare = {},
             .operation =
                 [&] {
                     line.run({"show", identifier.toUtf8()});
                 },
             .prepareFloor = {},
             .floor =
                 [&] {
                     line.runBare(
                         "SELECT * FROM RefDoc WHERE Object_ID = " + quoted +
                         "; SELECT c.*, n.Name FROM Category c LEFT JOIN Category_ID n USING (Category_ID) "
                         "WHERE c.Object_ID = " +
                         quoted + "; SELECT * FROM Link WHERE Object_ID = " + quoted +
                         " OR Link_Object_ID = " + quoted);
                 }});
}
BENCHMARK(showItem)->UseManualTime()->Iterations(21);

void listMillion(benchmark::State& state)
{
    const CommandLine line(Corpus::Million);
    measure(
        state, {"quillon-cli list --json of 1,000,000 items", "sqlite3 with SELECT of the same tables", 2},
        {.prepare = {},
         .operation =
             [&] {
                 line.run({"list", "--json"});
             },
         .prepareFloor = {},
         .floor = [&] { line.runBare("SELECT * FROM Main; SELECT * FROM RefDoc; SELECT * FROM RefFile"); }});
}
BENCHMARK(listMillion)->UseManualTime()->Iterations(5);

void searchFromShell(benchmark::State& state)
{
    const CommandLine line(Corpus::Default);
    SearchedCorpus corpus;
    const QString text = searchStrings().front().text;
    measure(state,
            {"quillon-cli search in 125,000 items, from start to end", "the first search of the window", 1},
            {.prepare = {},
             .operation =
                 [&] {
                     line.run({"search", text.toUtf8()});
                 },
             .prepareFloor = {},
             .floor =
                 [&] {
                     corpus.openAgain();
                     corpus.search(text);
                 }});
}
BENCHMARK(searchFromShell)->UseManualTime()->Iterations(11);

} // namespace

} // namespace quillon::bench
