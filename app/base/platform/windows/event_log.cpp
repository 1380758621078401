#include "app/base/platform/event_log.h"

#include "app/base/platform/windows/wide_text.h"

#include <windows.h>

namespace quillon::platform
{

void writeEventLog(const QString& line, const QString&)
{
    const HANDLE log = RegisterEventSourceW(nullptr, L"Quillon");
    if (log == nullptr)
        return;
    const wchar_t* text = wide(line);
    ReportEventW(log, EVENTLOG_SUCCESS, 0, 0, nullptr, 1, 0, &text, nullptr);
    DeregisterEventSource(log);
}

} // namespace quillon::platform
