#pragma once

#include <QString>

#include <windows.h>

#include <algorithm>

namespace quillon::testing
{

/// A console of Windows, in the place of the real one in what is included after this file.
struct Console {
    QString typed;              // what reading it gives next
    bool isInterrupted = false; // while it is read
    bool isOld = false;         // it takes no escape sequences
    bool isThere = true;
    DWORD mode = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT;

    static Console& present()
    {
        static Console console;
        return console;
    }

    static BOOL getMode(HANDLE, DWORD* mode)
    {
        *mode = present().mode;
        return present().isThere ? TRUE : FALSE;
    }
    static BOOL setMode(HANDLE, DWORD mode)
    {
        if (present().isOld && (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0)
            return FALSE;
        present().mode = mode;
        return TRUE;
    }
    static BOOL read(HANDLE, void* units, DWORD most, DWORD* count, void*)
    {
        if (present().isInterrupted)
            SetLastError(ERROR_OPERATION_ABORTED);
        const QString text = present().isInterrupted ? QString() : present().typed.left(most);
        std::copy(text.begin(), text.end(), static_cast<QChar*>(units));
        *count = static_cast<DWORD>(text.size());
        return TRUE;
    }
};

} // namespace quillon::testing

// NOLINTBEGIN(cppcoreguidelines-macro-usage): names of functions
#define GetConsoleMode quillon::testing::Console::getMode
#define SetConsoleMode quillon::testing::Console::setMode
#define ReadConsoleW quillon::testing::Console::read
// NOLINTEND(cppcoreguidelines-macro-usage)
