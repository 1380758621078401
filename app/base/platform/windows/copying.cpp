#include "app/base/platform/copying.h"

#include "app/base/error.h"
#include "app/base/platform/windows/wide_text.h"

#include <QDir>

#include <windows.h>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

namespace
{

[[noreturn]] void throwLastError()
{
    switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
        throw Error(errors::FileNotFound);
    case ERROR_PATH_NOT_FOUND:
        throw Error(errors::PathNotFound);
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
        throw Error(errors::PermissionDenied);
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        throw Error(errors::DiskFull);
    default:
        throw Error(errors::PathFileAccess);
    }
}

DWORD CALLBACK tellProgress(LARGE_INTEGER total, LARGE_INTEGER done, LARGE_INTEGER, LARGE_INTEGER, DWORD,
                            DWORD, HANDLE, HANDLE, void* progress)
{
    (*static_cast<const Files::Progress*>(progress))(done.QuadPart, total.QuadPart);
    return PROGRESS_CONTINUE;
}

} // namespace

void copyFile(const QString& source, const QString& folder, const QString& name,
              const Files::Progress& progress)
{
    const QString inFolder = QDir::toNativeSeparators(folder);
    wchar_t beside[MAX_PATH];
    if (GetTempFileNameW(wide(inFolder), L"qln", 0, beside) == 0)
        throwLastError();
    const QString target = inFolder + u'\\' + name;
    BOOL cancelled = FALSE;
    if (CopyFileExW(wide(QDir::toNativeSeparators(source)), beside, progress ? tellProgress : nullptr,
                    const_cast<Files::Progress*>(&progress), &cancelled, 0) == 0 ||
        MoveFileExW(beside, wide(target), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        const DWORD failure = GetLastError();
        DeleteFileW(beside);
        SetLastError(failure);
        throwLastError();
    }
}

} // namespace quillon::platform
