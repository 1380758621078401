#pragma once

#include "store/kept/copies.h"
#include "store/kept/damage.h"
#include "store/kept/place.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace quillon::kept
{

/// When copies are made.
struct CopyTimes {
    std::chrono::milliseconds afterOpening{5'000}; // the opening itself is not to be slowed down
    std::chrono::milliseconds between{3'600'000};
    std::chrono::milliseconds atClosing{60'000}; // as long as this the program waits for the last one
};

/// Makes copies of an open database in a thread of its own: one soon after it was opened, one now and then while it
/// changes, and one when it is closed. Before the first it removes what is too old.
class CopyWorker
{
public:
    /// `fileFolder`: of the registered files. `times`: nothing when none are made, and the database is only looked at when
    /// something is suspected. Both are called in the worker's thread: `onDamage` once at most, `onFailure` when there is
    /// one to take.
    CopyWorker(Place place, QString fileFolder, const std::optional<CopyTimes>& times,
               DamageListener onDamage = {}, std::function<void()> onFailure = {});
    /// Ends as `finish` does.
    ~CopyWorker();
    CopyWorker(const CopyWorker&) = delete;
    CopyWorker& operator=(const CopyWorker&) = delete;

    const Place& place() const { return m_place; }
    /// The database may be damaged: it is looked at as soon as can be. Does not wait.
    void inspectSoon(Inspection inspection);
    /// The database is closed. Does not wait.
    void close();
    /// Closes it and waits for the last copy, but not for ever: what is not done by then is given up.
    void finish();
    /// Why a copy could not be made, since this was asked last.
    std::optional<QString> takeFailure();

private:
    void run();
    void copyWhenDue();
    void lookWhenAsked();
    void copyOnce();
    void tellDamage();
    /// Ends early when the database is to be looked at. Whether it has been closed meanwhile.
    bool waitFor(std::chrono::milliseconds time);

    Place m_place;
    QString m_fileFolder;
    std::optional<CopyTimes> m_times;
    DamageListener m_onDamage;
    std::function<void()> m_onFailure;
    std::mutex m_mutex; // of the following
    std::condition_variable m_changed;
    bool m_isClosed = false;
    bool m_isDone = false;
    Inspection m_wanted = Inspection::WhenChanged; // of the next copy
    bool m_isDamaged = false;                      // and that has been told
    std::optional<QString> m_failure;
    std::atomic<bool> m_goesOn = true;
    std::thread m_thread; // last, for it uses all of them
};

} // namespace quillon::kept
