#include "app/base/platform/desktop.h"

#include "app/base/platform/windows/wide_text.h"

#include <QDir>

#include <windows.h>
// Needs windows.h before it.
#include <shellapi.h>

namespace quillon::platform
{

OpenOutcome openWithAssociatedApplication(const QString& path)
{
    const QString native = QDir::toNativeSeparators(path);
    const auto result = reinterpret_cast<INT_PTR>(
        ShellExecuteW(GetDesktopWindow(), L"open", wide(native), L"", L"", SW_SHOW));
    if (result == SE_ERR_NOASSOC)
        return OpenOutcome::NoAssociation;
    return result > 32 ? OpenOutcome::Opened : OpenOutcome::OtherFailure;
}

} // namespace quillon::platform
