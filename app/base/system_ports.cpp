#include "app/base/system_ports.h"

#include "app/base/platform/desktop.h"
#include "app/base/platform/event_log.h"

#include <QLocale>

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

} // namespace quillon
