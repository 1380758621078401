#pragma once

#include <QtGlobal>

#ifdef Q_OS_LINUX

namespace quillon::testing
{

/// Lets calls to the system fail that open, read, write, sync, name and remove files, those of the program and those of
/// all its libraries: they are led here because a program with this source has functions of those names.
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
