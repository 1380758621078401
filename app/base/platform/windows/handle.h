#pragma once

#include "app/base/platform/windows/wide_text.h"

#include <windows.h>

#include <memory>

namespace quillon::platform
{

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

/// An open file of the system; null after a failure.
using Handle = std::unique_ptr<void, HandleCloser>;

/// Opens what stands at `path` and leaves it to others, too.
inline Handle openExisting(const QString& path, DWORD access, DWORD flags)
{
    const HANDLE handle =
        CreateFileW(wide(nativePath(path)), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, flags, nullptr);
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

} // namespace quillon::platform
