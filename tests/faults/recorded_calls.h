#pragma once

#include <QtGlobal>

#ifdef Q_OS_LINUX

#include <QString>

namespace quillon::testing
{

/// Lets the disk below the databases note, in one row with what these do, what this program does to the files of a
/// folder by calls of its own: they are led here because a program with this source has functions of those names.
class RecordedCalls
{
public:
    /// From now on, in the folder and in those within it.
    explicit RecordedCalls(const QString& folder);
    ~RecordedCalls();
    RecordedCalls(const RecordedCalls&) = delete;
    RecordedCalls& operator=(const RecordedCalls&) = delete;
};

} // namespace quillon::testing

#endif
