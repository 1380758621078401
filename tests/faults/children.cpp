#include "tests/faults/children.h"

#ifdef Q_OS_UNIX

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <utility>

namespace quillon::testing
{

Child::Child(const std::function<void(const Tell&)>& work)
{
    std::array<int, 2> ends = {-1, -1};
    if (pipe(ends.data()) != 0)
        qFatal("no pipe");
    std::fflush(nullptr); // or the child would write it once more
    m_process = fork();
    if (m_process < 0)
        qFatal("no process");
    if (m_process == 0) {
        close(ends[0]);
        work([to = ends[1]](int number) {
            if (write(to, &number, sizeof number) != static_cast<ssize_t>(sizeof number))
                _exit(2); // nobody listens any more
        });
        _exit(0); // what belongs to the parent is not to be ended here
    }
    close(ends[1]);
    m_pipe = ends[0];
}

Child::~Child()
{
    if (m_process > 0) {
        kill();
        finish();
    }
    close(m_pipe);
}

Child::Heard Child::hear(int& number, int microseconds)
{
    pollfd asked = {.fd = m_pipe, .events = POLLIN, .revents = 0};
    const timespec patience = {.tv_sec = microseconds / 1'000'000,
                               .tv_nsec = microseconds % 1'000'000 * 1000L};
    int ready = -1;
    do
        ready = ppoll(&asked, 1, microseconds < 0 ? nullptr : &patience, nullptr);
    while (ready < 0 && errno == EINTR);
    if (ready == 0)
        return Heard::Nothing;
    // A number is written whole, for it is shorter than what a pipe takes at once.
    return read(m_pipe, &number, sizeof number) == static_cast<ssize_t>(sizeof number) ? Heard::Number
                                                                                       : Heard::End;
}

void Child::kill()
{
    ::kill(m_process, SIGKILL);
}

bool Child::finish()
{
    const pid_t process = std::exchange(m_process, -1);
    while (waitpid(process, &m_status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(m_status) && WEXITSTATUS(m_status) == 0;
}

} // namespace quillon::testing

#endif
