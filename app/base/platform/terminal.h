#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace quillon::platform
{

/// The standard streams.
enum class Stream { Input, Output, Errors };

/// Lets a program with windows answer on the terminal it was called from, where the system gives it none of its own.
void joinTerminal();

/// Whether a person sits at the other end of a stream.
bool isTerminal(Stream stream);

/// Prepares the terminal at a stream for escape sequences, until the process ends, and tells whether it takes them. False
/// where no person sits.
bool takesEscapeSequences(Stream stream);

/// The columns of the terminal at a stream; 0 when they are not known.
int terminalColumns(Stream stream);

enum class Written {
    Whole,
    Closed, ///< nobody reads it any more, or the waiting was interrupted
    Failed  ///< `lastSystemError` tells why
};
/// Writes UTF-8 to a stream, however long the other end takes.
Written writeTo(Stream stream, QByteArrayView text);

/// What can be read of the standard input next, at most so many bytes; empty at its end, nothing when that failed or was
/// interrupted.
std::optional<QByteArray> readInput(qsizetype atMost);

/// From now on an interruption (Ctrl+C, the end of the session) is only noted, so that what is being written becomes
/// whole, and a stream that nobody reads ends no program. A second interruption ends the program.
void noteInterruptions();
bool wasInterrupted();

} // namespace quillon::platform
