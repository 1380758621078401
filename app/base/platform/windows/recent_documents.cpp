#include "app/base/platform/recent_documents.h"

#include "app/base/platform/windows/wide_text.h"

#include <QDir>
#include <QFileInfo>

#include <windows.h>
// These need windows.h before them.
#include <objbase.h>
#include <shlobj.h>

namespace quillon::platform
{

QString noteRecentDocument(const QString& path)
{
    const QString native = QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath());
    const bool entered =
        SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE));
    SHAddToRecentDocs(SHARD_PATHW, wide(native)); // it does not tell whether it did
    if (entered)
        CoUninitialize();
    return {};
}

} // namespace quillon::platform
