#include "app/base/platform/command_line.h"

#include <windows.h>
// Needs windows.h before it.
#include <shellapi.h>

#include <memory>

namespace quillon::platform
{

namespace
{

struct WordsReturner {
    void operator()(wchar_t** words) const { LocalFree(words); }
};
using Words = std::unique_ptr<wchar_t*, WordsReturner>;

} // namespace

QStringList arguments(int, char**)
{
    // The words handed to main() have lost what the system's code page does not know.
    QStringList list;
    int count = 0;
    const Words words(CommandLineToArgvW(GetCommandLineW(), &count));
    for (int i = 0; words && i < count; ++i)
        list << QString::fromWCharArray(words.get()[i]);
    return list;
}

} // namespace quillon::platform
