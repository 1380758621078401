#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace quillon
{

/// What the words after the program's name ask for.
struct CommandLine {
    enum class Request { Run, Help, Version, Refused };

    Request request = Request::Run;
    std::optional<QString> file = {}; // the database to open, as it was written
    QString complaint = {};           // why it was refused, for the person at the terminal
    bool atHome = false;              // works in the home folder, wherever it was started
    bool restores = false;            // a run for taking things back
};

/// Understands the arguments without the program's own name.
CommandLine parseCommandLine(const QStringList& arguments);

/// Answers everything but a run on the standard streams; needs no display. Returns the exit code.
int answerOnTerminal(const CommandLine& commandLine);

} // namespace quillon
