#pragma once

#include <QtGlobal>

#ifdef Q_OS_LINUX

namespace quillon::testing
{

/// Lets the program's own calls to the system fail that open, read, write, sync, name and remove files. The linker leads
/// them here (`--wrap`); those of the libraries go on as ever.
class FailingCalls
{
public:
    enum class Duration { Once, FromThenOn };
    /// A write of half of the bytes, which is no failure.
    static constexpr int ShortWrite = -1;

    /// Lets the call with this number (from 1) end in the system's `error`, or every call from that one on.
    static void failAt(int number, int error, Duration duration);
    /// From now on everything goes well again. How many calls there have been since `failAt`.
    static int heal();
    /// What failed first since `failAt`; null when nothing did.
    static const char* failedCall();
};

} // namespace quillon::testing

#endif
