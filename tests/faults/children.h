#pragma once

#include <QtGlobal>

#ifdef Q_OS_UNIX

#include <QByteArray>

#include <functional>

#include <sys/types.h>

namespace quillon::testing
{

/// Another program: a child of this process, which must hold no file open. It tells what it does, line by line, and
/// ends with the work.
class Child
{
public:
    /// Tells the parent a number at once.
    using Tell = std::function<void(int number)>;
    explicit Child(const std::function<void(const Tell&)>& work);
    /// Kills it when it still runs.
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Waits for the next number; false when the child has ended. -1 as `microseconds` waits for ever.
    enum class Heard { Number, Nothing, End };
    Heard hear(int& number, int microseconds = -1);
    void kill();
    /// Waits for its end. Whether it ended by itself and well.
    bool finish();

private:
    pid_t m_process = -1;
    int m_pipe = -1;
    int m_status = -1;
};

} // namespace quillon::testing

#endif
