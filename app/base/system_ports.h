#pragma once

#include "app/base/ports/clock.h"
#include "app/base/ports/desktop.h"
#include "app/base/ports/event_log.h"

namespace quillon
{

/// The computer's clock with the texts of the system's own locale, which need not be the Japanese one.
class SystemClock : public Clock
{
public:
    QDateTime now() const override;
    QString shortDate() const override;
    QString shortTime() const override;
};

/// The application log of the operating system or the log file in its place.
class SystemEventLog : public EventLog
{
public:
    /// `programFolder`: where the program file lies.
    explicit SystemEventLog(QString programFolder) : m_programFolder(std::move(programFolder)) {}
    void write(const QString& line) override;

private:
    QString m_programFolder;
};

/// The desktop with the person's own associations.
class SystemDesktop : public Desktop
{
public:
    /// `programFolder`: where the program file lies, and with it the log of what nobody waits for.
    explicit SystemDesktop(QString programFolder) : m_programFolder(std::move(programFolder)) {}
    OpenOutcome open(const QString& path) override;
    /// Done in a thread of its own, for which the end of the program waits.
    void noteRecent(const QString& path) override;

private:
    QString m_programFolder;
};

} // namespace quillon
