#include "bench/bare_database.h"
#include "bench/corpus/corpus.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

/// Runs a program that lies beside this one to its end, in `folder`.
void runProgram(const QString& name, const QString& folder)
{
    const QByteArray path = QDir(QCoreApplication::applicationDirPath()).filePath(name).toLocal8Bit();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, folder.toLocal8Bit().constData());
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) // what the platform without a screen remarks
        posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
    QByteArray word = path; // its own copy: the system's interface asks for writable words
    std::array<char*, 2> words = {word.data(), nullptr};
    pid_t child = 0;
    const int failure = posix_spawn(&child, path.constData(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (failure != 0 || waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("a program could not be started: " + path.toStdString());
}

/// Measures the start of the program up to its painted splash beside that of another program.
void measureStart(benchmark::State& state, const RowText& text, const QString& rival)
{
    const QTemporaryDir folder;
    QDir(folder.path()).mkdir(u"RefFile"_s);
    measure(state, text,
            {.prepare = {},
             .operation = [&] { runProgram(u"quillon-until-splash"_s, folder.path()); },
             .prepareFloor = {},
             .floor = [&] { runProgram(rival, folder.path()); }});
}

void startBesideEmptyWindow(benchmark::State& state)
{
    measureStart(
        state,
        {"Start of the program, until the splash is painted", "that of an empty window, without a font", 1.5},
        u"quillon-empty-window"_s);
}
BENCHMARK(startBesideEmptyWindow)->UseManualTime()->Iterations(21);

void startBesideLabel(benchmark::State& state)
{
    measureStart(state, {"The same", "that of a window with one Japanese text"}, u"quillon-label-window"_s);
}
BENCHMARK(startBesideLabel)->UseManualTime()->Iterations(21);

void openSmallFile(benchmark::State& state)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"small.mdb"_s);
    corpus::writeCorpus({.definitions = 40,
                         .documents = 5,
                         .documentMegabytes = 0,
                         .files = 5,
                         .categories = 10,
                         .links = 20,
                         .memberships = 30},
                        path);
    std::unique_ptr<QuietProgram> program;
    measure(state, {"Opening a file with 50 items, until painted", "SELECT of the same columns"},
            {.prepare =
                 [&] {
                     program.reset();
                     program = std::make_unique<QuietProgram>();
                 },
             .operation = [&] { program->open(path); },
             .prepareFloor = {},
             .floor =
                 [&] {
                     const BareDatabase database(path);
                     for (const char* sql :
                          {"SELECT Name, Object_ID FROM Main", "SELECT Name, Object_ID FROM RefDoc",
                           "SELECT Name, Object_ID FROM RefFile"}) {
                         BareStatement statement(database, sql);
                         readAll(statement, 2);
                     }
                 }});
}
BENCHMARK(openSmallFile)->UseManualTime()->Iterations(21);

} // namespace

} // namespace quillon::bench
