#include "app/base/system_ports.h"

#include "app/base/platform/desktop.h"
#include "app/base/platform/event_log.h"
#include "app/base/platform/recent_documents.h"

#include <QLocale>
#include <QThreadPool>

#include <new>

namespace quillon
{

QDateTime SystemClock::now() const
{
    return QDateTime::currentDateTime();
}

QString SystemClock::shortDate() const
{
    return QLocale::system().toString(now().date(), QLocale::ShortFormat);
}

QString SystemClock::shortTime() const
{
    return QLocale::system().toString(now().time(), QLocale::ShortFormat);
}

void SystemEventLog::write(const QString& line)
{
    platform::writeEventLog(line, m_programFolder);
}

OpenOutcome SystemDesktop::open(const QString& path)
{
    return platform::openWithAssociatedApplication(path);
}

void SystemDesktop::noteRecent(const QString& path)
{
    QThreadPool::globalInstance()->start([path, programFolder = m_programFolder] {
        try {
            const QString failure = platform::noteRecentDocument(path);
            if (!failure.isEmpty())
                platform::writeEventLog(failure, programFolder);
        } catch (const std::bad_alloc&) {
            // The list of the desktop lacks a database; nothing worse has happened.
        }
    });
}

} // namespace quillon
