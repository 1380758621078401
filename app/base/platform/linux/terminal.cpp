#include "app/base/platform/terminal.h"

#include <csignal>

#include <array>
#include <cerrno>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace quillon::platform
{

namespace
{

// A signal knows no object.
volatile std::sig_atomic_t interrupted = 0; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)
constexpr std::array Interruptions = {SIGINT, SIGTERM, SIGHUP};

int descriptorOf(Stream stream)
{
    switch (stream) {
    case Stream::Input:
        return STDIN_FILENO;
    case Stream::Output:
        return STDOUT_FILENO;
    case Stream::Errors:
        return STDERR_FILENO;
    }
    return -1;
}

} // namespace

void joinTerminal()
{
    // Here every program has that of the one that called it.
}

bool isTerminal(Stream stream)
{
    return isatty(descriptorOf(stream)) == 1;
}

bool takesEscapeSequences(Stream stream)
{
    // As far as is known; for colours the caller asks the environment, too.
    return isTerminal(stream);
}

int terminalColumns(Stream stream)
{
    winsize size = {};
    return ioctl(descriptorOf(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

Written writeTo(Stream stream, QByteArrayView text)
{
    while (!text.isEmpty()) {
        const ssize_t written =
            write(descriptorOf(stream), text.data(), static_cast<std::size_t>(text.size()));
        if (written >= 0)
            text = text.sliced(written);
        else if (errno == EPIPE || (errno == EINTR && interrupted != 0))
            return Written::Closed;
        else if (errno != EINTR)
            return Written::Failed;
    }
    return Written::Whole;
}

namespace
{

/// Waits until something can be read. False when an interruption ends the waiting, also one that came just before.
bool waitForInput()
{
    sigset_t interruptions;
    sigemptyset(&interruptions);
    for (const int signal : Interruptions)
        sigaddset(&interruptions, signal);
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &interruptions, &before);
    pollfd input = {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    int ready = 0;
    do {
        // They come through during the waiting only.
        ready = interrupted != 0 ? -1 : ppoll(&input, 1, nullptr, &before);
    } while (ready < 0 && interrupted == 0 && errno == EINTR);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return interrupted == 0;
}

} // namespace

std::optional<QByteArray> readInput(qsizetype atMost)
{
    if (!waitForInput())
        return std::nullopt;
    QByteArray bytes(atMost, Qt::Uninitialized);
    const ssize_t read = ::read(STDIN_FILENO, bytes.data(), static_cast<std::size_t>(atMost));
    if (read < 0)
        return std::nullopt;
    bytes.truncate(read);
    return bytes;
}

void noteInterruptions()
{
    struct sigaction action = {};
    action.sa_handler = [](int) { interrupted = 1; };
    // Once: whoever cannot wait for the end interrupts again. A waiting read ends.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : Interruptions)
        sigaction(signal, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

bool wasInterrupted()
{
    return interrupted != 0;
}

} // namespace quillon::platform
