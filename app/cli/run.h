#pragma once

#include "app/cli/arguments.h"
#include "app/cli/line_dialogs.h"
#include "app/cli/output.h"
#include "store/session.h"

#include <QString>

namespace quillon::cli
{

/// One command at work.
struct Run {
    const Arguments& arguments;
    Output& output;
    LineDialogs& dialogs;
    LineLog& log;
    Session& session;
    QString database; // its full name

    bool isJson() const { return arguments.has(QStringLiteral("--json")); }
    /// The sign behind each identifier when only these are wanted, else nothing.
    std::optional<char> identifierEnd() const;
    /// To be asked between two writes and between two pieces of a list: an interruption ends the command here.
    void goOn() const;
};

/// Runs a command: the words after the program's name. Returns the exit code.
int runCommand(const QStringList& words);

} // namespace quillon::cli
