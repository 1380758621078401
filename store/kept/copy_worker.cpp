#include "store/kept/copy_worker.h"

#include "app/base/error.h"
#include "store/kept/background_work.h"
#include "store/kept/pruning.h"

#include <QDateTime>
#include <QDir>

#include <algorithm>
#include <exception>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

CopyWorker::CopyWorker(Place place, QString fileFolder, const std::optional<CopyTimes>& times,
                       DamageListener onDamage, std::function<void()> onFailure)
    : m_place(std::move(place)), m_fileFolder(std::move(fileFolder)), m_times(times),
      m_onDamage(std::move(onDamage)), m_onFailure(std::move(onFailure)), m_thread([this] { run(); })
{
}

CopyWorker::~CopyWorker()
{
    finish();
}

void CopyWorker::finish()
{
    if (!m_thread.joinable())
        return;
    close();
    {
        std::unique_lock lock(m_mutex);
        // Nobody waits for the end of a look.
        const auto patience = m_times ? m_times->atClosing : std::chrono::milliseconds(0);
        if (!m_changed.wait_for(lock, patience, [this] { return m_isDone; }))
            m_goesOn = false;
    }
    m_thread.join();
}

void CopyWorker::inspectSoon(Inspection inspection)
{
    const std::lock_guard lock(m_mutex);
    if (m_isDamaged)
        return;
    m_wanted = std::max(m_wanted, inspection);
    m_changed.notify_all();
}

void CopyWorker::close()
{
    const std::lock_guard lock(m_mutex);
    m_isClosed = true;
    m_changed.notify_all();
}

std::optional<QString> CopyWorker::takeFailure()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_failure, std::nullopt);
}

bool CopyWorker::waitFor(std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, time, [this] { return m_isClosed || m_wanted != Inspection::WhenChanged; });
    return m_isClosed;
}

void CopyWorker::run()
{
    // Not of low priority as a whole: while a step holds its lock, it must get its turn, or whoever writes waits for that.
    if (m_times)
        copyWhenDue();
    else
        lookWhenAsked();
    const std::lock_guard lock(m_mutex);
    m_isDone = true;
    m_changed.notify_all();
}

void CopyWorker::copyWhenDue()
{
    bool isClosed = waitFor(m_times->afterOpening);
    try {
        inBackground([this] { prune(m_place, QDateTime::currentMSecsSinceEpoch()); });
    } catch (const std::exception&) {
        // Without memory nothing can be removed; the next opening tries again.
    }
    for (;;) {
        copyOnce();
        if (isClosed)
            break;
        isClosed = waitFor(m_times->between);
    }
}

void CopyWorker::lookWhenAsked()
{
    constexpr std::chrono::hours Long(24);
    while (!waitFor(Long)) {
        const bool isAsked = [this] {
            const std::lock_guard lock(m_mutex);
            return m_wanted != Inspection::WhenChanged;
        }();
        if (isAsked)
            copyOnce();
    }
}

void CopyWorker::copyOnce()
{
    std::optional<QString> failure;
    bool isDamaged = false;
    Inspection inspection = Inspection::WhenChanged;
    {
        const std::lock_guard lock(m_mutex);
        inspection = std::exchange(m_wanted, inspection);
    }
    try {
        makeCopy({.place = m_place,
                  .fileFolder = m_fileFolder,
                  .now = [] { return QDateTime::currentDateTime(); },
                  .goesOn = [this] { return m_goesOn.load(); },
                  .pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); },
                  .inspection = inspection,
                  .onlyLooks = !m_times});
    } catch (const Error& error) {
        failure = error.description;
        isDamaged = error.number == errors::NotADatabase;
    } catch (const std::exception&) {
        failure = standardDescription(errors::OutOfMemory);
    }
    if (isDamaged)
        tellDamage();
    if (!failure)
        return;
    {
        const std::lock_guard lock(m_mutex);
        const QString text = m_times ? u"データベース「%1」の控えを作成できませんでした。%2"_s
                                     : u"データベース「%1」を検査できませんでした。%2"_s;
        m_failure = text.arg(QDir::toNativeSeparators(m_place.database()), *failure);
    }
    if (m_onFailure)
        m_onFailure();
}

void CopyWorker::tellDamage()
{
    {
        const std::lock_guard lock(m_mutex);
        m_wanted = Inspection::WhenChanged; // looking at it has met with the damage, too
        if (std::exchange(m_isDamaged, true))
            return;
    }
    if (!m_onDamage)
        return;
    try {
        m_onDamage(lookForGoodCopy(m_place));
    } catch (const std::exception&) {
        // Without memory there is nobody to tell it to. The log says why there is no copy.
    }
}

} // namespace quillon::kept
