#include "store/kept/copy_worker.h"

#include "app/base/error.h"
#include "app/base/platform/background.h"
#include "store/kept/copies.h"
#include "store/kept/pruning.h"

#include <QDateTime>

#include <exception>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

CopyWorker::CopyWorker(Place place, QString fileFolder, const CopyTimes& times)
    : m_place(std::move(place)), m_fileFolder(std::move(fileFolder)), m_times(times),
      m_thread([this] { run(); })
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
        if (!m_changed.wait_for(lock, m_times.atClosing, [this] { return m_isDone; }))
            m_goesOn = false;
    }
    m_thread.join();
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
    return m_changed.wait_for(lock, time, [this] { return m_isClosed; });
}

void CopyWorker::run()
{
    platform::workInBackground();
    bool isClosed = waitFor(m_times.afterOpening);
    try {
        prune(m_place, QDateTime::currentMSecsSinceEpoch());
    } catch (const std::exception&) {
        // Without memory nothing can be removed; the next opening tries again.
    }
    for (;;) {
        copyOnce();
        if (isClosed)
            break;
        isClosed = waitFor(m_times.between);
    }
    const std::lock_guard lock(m_mutex);
    m_isDone = true;
    m_changed.notify_all();
}

void CopyWorker::copyOnce()
{
    std::optional<QString> failure;
    try {
        makeCopy({.place = m_place,
                  .fileFolder = m_fileFolder,
                  .now = [] { return QDateTime::currentDateTime(); },
                  .goesOn = [this] { return m_goesOn.load(); },
                  .pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }});
    } catch (const Error& error) {
        failure = error.description;
    } catch (const std::exception&) {
        failure = standardDescription(errors::OutOfMemory);
    }
    const std::lock_guard lock(m_mutex);
    if (failure)
        m_failure = u"データベース「%1」の控えを作成できませんでした。%2"_s.arg(m_place.database(), *failure);
}

} // namespace quillon::kept
