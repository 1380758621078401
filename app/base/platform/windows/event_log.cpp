#include "app/base/platform/event_log.h"

#include "app/base/platform/terminal.h"
#include "app/base/platform/windows/wide_text.h"

#include <windows.h>

namespace quillon::platform
{

void writeEventLog(const QString& line, const QString&)
{
    const HANDLE log = RegisterEventSourceW(nullptr, L"Quillon");
    bool isTaken = false;
    if (log != nullptr) {
        const wchar_t* text = wide(line);
        isTaken = ReportEventW(log, EVENTLOG_SUCCESS, 0, 0, nullptr, 1, 0, &text, nullptr) != 0;
        DeregisterEventSource(log);
    }
    // What nobody can read afterwards somebody may read now.
    if (!isTaken)
        writeTo(Stream::Errors, line.toUtf8() + "\r\n");
}

} // namespace quillon::platform
