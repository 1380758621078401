#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

namespace quillon::testing
{

/// What SQLite asks of the disk.
enum class DiskCall { Open, Read, Write, Truncate, Sync, Size, Lock, Unlock, AskLock, Delete, Exists, Count };

/// How one of these fails. Not every call can fail in every way.
enum class DiskFailure {
    Broken,        // EIO, and nothing has been done
    Full,          // ENOSPC; of an opening: no descriptor is left (EMFILE)
    ShortWrite,    // ENOSPC after half of the bytes
    DoneAndBroken, // EIO, although it has been done
    Quota,         // EDQUOT
    Interrupted,   // EINTR, where SQLite does not ask again by itself
    Count
};

/// Whether a call can fail in this way.
bool canFail(DiskCall call, DiskFailure failure);

/// What happened on the disk, in order, for telling afterwards what a power failure would have left.
struct DiskEvent {
    enum class Kind {
        Make,   // a new, empty file
        Write,  // bytes at a place
        Resize, // to a size
        Sync,   // the file's bytes are on the disk
        Unlink, // of a file or an empty folder
        MakeFolder,
        Link,      // the file, or that at `from`, gets one more name
        Rename,    // of what is at `from`; both names change or neither does
        SyncNames, // the names in the folder `path` are on the disk
        Mark       // of the test, with a number
    };
    Kind kind = Kind::Mark;
    QString path = {};
    std::int64_t at = 0; // the place, the size or the number
    QByteArray bytes = {};
    std::uint64_t file =
        0; // the number under which a file is known that may have no name; 0: it is known by its path
    QString from = {};
};

/// The disk below every database of this process: that of the system, which can be told to fail and to write down what
/// happens. To be made before the first database is opened; there is one in a process.
class FaultyDisk
{
public:
    static FaultyDisk& instance();
    ~FaultyDisk() = default;

    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    enum class Duration { Once, FromThenOn };

    /// Lets the call with this number (from 1) fail, or every call from that one on that can fail in this way.
    void failAt(int number, DiskFailure failure, Duration duration);
    /// From now on everything goes well again. How many calls there have been since `failAt`.
    int heal();
    /// Whether a call has failed since `failAt`.
    bool hasFailed() const { return m_hasFailed; }
    DiskCall failedCall() const { return m_failedCall; }
    /// How many calls of each kind there have been since `failAt`.
    const std::array<int, static_cast<std::size_t>(DiskCall::Count)>& calls() const { return m_calls; }

    void startRecording();
    std::vector<DiskEvent> stopRecording();
    /// Writes a number between what happens.
    void mark(int number);

    // For the functions that SQLite calls.

    /// The failure of the call that comes now, if it is to fail.
    bool failsNow(DiskCall call, DiskFailure& failure);
    void note(DiskEvent event);
    int lastError() const { return m_lastError; }
    void setLastError(int error) { m_lastError = error; }

private:
    FaultyDisk();

    int m_failing = 0; // 0: nothing fails
    DiskFailure m_failure = DiskFailure::Broken;
    Duration m_duration = Duration::Once;
    int m_number = 0;
    bool m_hasFailed = false;
    DiskCall m_failedCall = DiskCall::Open;
    int m_lastError = 0;
    std::array<int, static_cast<std::size_t>(DiskCall::Count)> m_calls = {};
    bool m_records = false;
    std::vector<DiskEvent> m_events;
};

} // namespace quillon::testing
