#include "app/base/platform/command_line.h"

#include <windows.h>
// Needs windows.h before it.
#include <shellapi.h>

namespace quillon::platform
{

QStringList arguments(int, char**)
{
    // The words handed to main() have lost what the system's code page does not know.
    QStringList list;
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 0; i < count; ++i)
        list << QString::fromWCharArray(words[i]);
    LocalFree(words);
    return list;
}

} // namespace quillon::platform
