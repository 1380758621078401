#include "app/base/platform/terminal.h"

#include "app/base/platform/windows/wide_text.h"

#include <QString>

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace quillon::platform
{

namespace
{

std::atomic<bool> interrupted = false;
// What is typed was broken off by an interruption. Apart from the other, which the system's own thread notes before or
// after the reading ends: noted here, the first interruption would come there as the second.
std::atomic<bool> inputBrokenOff = false;

HANDLE handleOf(Stream stream)
{
    switch (stream) {
    case Stream::Input:
        return GetStdHandle(STD_INPUT_HANDLE);
    case Stream::Output:
        return GetStdHandle(STD_OUTPUT_HANDLE);
    case Stream::Errors:
        return GetStdHandle(STD_ERROR_HANDLE);
    }
    return INVALID_HANDLE_VALUE;
}

/// A console takes units of UTF-16, whatever its code page is.
Written writeToConsole(HANDLE console, const QString& text)
{
    constexpr qsizetype Most = 8'000; // units that every console takes at once
    for (qsizetype at = 0; at < text.size();) {
        const qsizetype count = std::min(Most, text.size() - at);
        DWORD written = 0;
        if (WriteConsoleW(console, wide(text) + at, static_cast<DWORD>(count), &written, nullptr) == 0)
            return Written::Failed;
        at += static_cast<qsizetype>(written);
    }
    return Written::Whole;
}

/// What consoles were like before. They outlive the program, and whoever uses them next gets them back like that.
class FormerModes
{
public:
    FormerModes() = default;
    ~FormerModes()
    {
        for (const auto& [console, mode] : m_modes)
            SetConsoleMode(console, mode);
    }
    FormerModes(const FormerModes&) = delete;
    FormerModes& operator=(const FormerModes&) = delete;

    void keep(HANDLE console, DWORD mode) { m_modes.emplace_back(console, mode); }

private:
    std::vector<std::pair<HANDLE, DWORD>> m_modes;
};

BOOL WINAPI noteInterruption(DWORD)
{
    return interrupted.exchange(true) ? FALSE : TRUE;
}

} // namespace

void joinTerminal()
{
    // What was led elsewhere stays so; only what is nowhere comes to be the caller's.
    AttachConsole(ATTACH_PARENT_PROCESS);
}

bool isTerminal(Stream stream)
{
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

bool takesEscapeSequences(Stream stream)
{
    const HANDLE console = handleOf(stream);
    DWORD mode = 0;
    if (GetConsoleMode(console, &mode) == 0)
        return false;
    if ((mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0)
        return true;
    // Refused by the consoles before Windows 10, which would show the sequences as text.
    if (SetConsoleMode(console, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0)
        return false;
    static FormerModes former;
    former.keep(console, mode);
    return true;
}

int terminalColumns(Stream stream)
{
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    return GetConsoleScreenBufferInfo(handleOf(stream), &info) != 0
               ? info.srWindow.Right - info.srWindow.Left + 1
               : 0;
}

Written writeTo(Stream stream, QByteArrayView text)
{
    const HANDLE handle = handleOf(stream);
    if (isTerminal(stream))
        return writeToConsole(handle, QString::fromUtf8(text));
    while (!text.isEmpty()) {
        DWORD written = 0;
        if (WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) == 0) {
            const DWORD failure = GetLastError();
            const bool isClosed = failure == ERROR_BROKEN_PIPE || failure == ERROR_NO_DATA;
            return isClosed ? Written::Closed : Written::Failed;
        }
        text = text.sliced(static_cast<qsizetype>(written));
    }
    return Written::Whole;
}

std::optional<QByteArray> readInput(qsizetype atMost)
{
    const HANDLE input = handleOf(Stream::Input);
    DWORD read = 0;
    if (isTerminal(Stream::Input)) {
        QString text(std::min<qsizetype>(atMost, 4'000), Qt::Uninitialized);
        SetLastError(ERROR_SUCCESS);
        if (ReadConsoleW(input, text.data(), static_cast<DWORD>(text.size()), &read, nullptr) == 0)
            return std::nullopt;
        // An interruption looks like the end of the input but for this.
        if (read == 0 && GetLastError() == ERROR_OPERATION_ABORTED) {
            inputBrokenOff = true;
            return std::nullopt;
        }
        text.truncate(static_cast<qsizetype>(read));
        // What ends the input of a console.
        constexpr char16_t EndOfInput = 0x1A;
        return text.startsWith(QChar(EndOfInput)) ? QByteArray() : text.toUtf8();
    }
    QByteArray bytes(atMost, Qt::Uninitialized);
    if (ReadFile(input, bytes.data(), static_cast<DWORD>(atMost), &read, nullptr) == 0)
        return GetLastError() == ERROR_BROKEN_PIPE ? std::optional(QByteArray()) : std::nullopt;
    bytes.truncate(static_cast<qsizetype>(read));
    return bytes;
}

void noteInterruptions()
{
    SetConsoleCtrlHandler(noteInterruption, TRUE);
}

bool wasInterrupted()
{
    return interrupted || inputBrokenOff;
}

} // namespace quillon::platform
