#include "app/base/platform/desktop.h"

#include "app/base/platform/windows/wide_text.h"

#include <QDir>

#include <windows.h>
// These need windows.h before them.
#include <objbase.h>
#include <shellapi.h>

namespace quillon::platform
{

OpenOutcome openWithAssociatedApplication(const QString& path)
{
    const QString native = QDir::toNativeSeparators(path);
    // Some applications are reached through objects. A thread that knows of them already is told so again.
    const bool entered =
        SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE));
    const auto result = reinterpret_cast<INT_PTR>(
        ShellExecuteW(GetDesktopWindow(), L"open", wide(native), L"", L"", SW_SHOW));
    if (entered)
        CoUninitialize();
    if (result == SE_ERR_NOASSOC)
        return OpenOutcome::NoAssociation;
    return result > 32 ? OpenOutcome::Opened : OpenOutcome::OtherFailure;
}

} // namespace quillon::platform
