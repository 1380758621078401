#pragma once

#include <QtGlobal>

namespace quillon::exchange
{

/// Who is told how far a long work is, and may end it.
class Progress
{
public:
    virtual ~Progress() = default;

    /// `whole` is 0 as long as nobody knows it. What is counted is the work's own affair: rows, files, bytes.
    virtual void at(qint64 done, qint64 whole) = 0;
    /// Whether the person wants it to end.
    virtual bool cancelled() { return false; }
};

/// Tells `progress`, which may be null; throws `Cancelled` when the work is to end.
void advance(Progress* progress, qint64 done, qint64 whole);

} // namespace quillon::exchange
