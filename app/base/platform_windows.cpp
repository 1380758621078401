#include "app/base/platform.h"

#include "app/base/error.h"

#include <QDir>
#include <QFileInfo>

#include <windows.h>
// Needs windows.h before it.
#include <shellapi.h>

#include <array>
#include <new>
#include <string>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

namespace
{

constexpr UINT CodePage932 = 932;

using LengthTable = std::array<quint8, 0x10000>;

/// How many bytes each UTF-16 code unit takes: units are converted independently of each other, because everything
/// that would need two of them is outside the page.
LengthTable makeLengthTable()
{
    LengthTable lengths;
    lengths.fill(1);
    for (int unit = 0; unit < 0x10000; ++unit) {
        if (QChar::isSurrogate(static_cast<char32_t>(unit)))
            continue;
        const wchar_t text = static_cast<wchar_t>(unit);
        char bytes[8];
        // Without what merely looks alike: a character that the page lacks is a "?".
        if (WideCharToMultiByte(CodePage932, WC_NO_BEST_FIT_CHARS, &text, 1, bytes, sizeof bytes, nullptr,
                                nullptr) == 2)
            lengths[static_cast<std::size_t>(unit)] = 2;
    }
    // These seven are other code points of characters that the page has, their full-width twins (— 〜 ‖ − ¢ £ ¬).
    for (const char16_t twin : {u'\u2014', u'\u301C', u'\u2016', u'\u2212', u'\u00A2', u'\u00A3', u'\u00AC'})
        lengths[twin] = 2;
    return lengths;
}

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

bool mayOpen(const QString& path, DWORD access, DWORD flags)
{
    const HANDLE handle = CreateFileW(wide(QDir::toNativeSeparators(path)), access,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(handle);
    return true;
}

} // namespace

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

qsizetype byteLength932(QStringView text)
{
    static const LengthTable lengths = makeLengthTable();
    qsizetype bytes = 0;
    for (const QChar unit : text)
        bytes += lengths[unit.unicode()];
    return bytes;
}

std::optional<QString> decode932(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return QString();
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CodePage932, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
    if (length == 0)
        return std::nullopt;
    QString text(length, Qt::Uninitialized);
    MultiByteToWideChar(CodePage932, MB_ERR_INVALID_CHARS, bytes.data(), size,
                        reinterpret_cast<wchar_t*>(text.data()), length);
    return text;
}

QString decode932Forgivingly(QByteArrayView bytes)
{
    const int size = static_cast<int>(bytes.size());
    const int length = size == 0 ? 0 : MultiByteToWideChar(CodePage932, 0, bytes.data(), size, nullptr, 0);
    QString text(length, Qt::Uninitialized);
    if (length > 0)
        MultiByteToWideChar(CodePage932, 0, bytes.data(), size, reinterpret_cast<wchar_t*>(text.data()),
                            length);
    return text;
}

struct Collator::Handle {
};

Collator::Collator() = default;
Collator::~Collator() = default;

void Collator::appendKey(QStringView text, std::string& keys) const
{
    const auto* units = reinterpret_cast<const wchar_t*>(text.utf16());
    const int length = static_cast<int>(text.size());
    if (length == 0)
        return;
    const int needed = LCMapStringEx(L"ja-JP", LCMAP_SORTKEY, units, length, nullptr, 0, nullptr, nullptr, 0);
    const std::size_t start = keys.size();
    keys.resize(start + static_cast<std::size_t>(needed));
    LCMapStringEx(L"ja-JP", LCMAP_SORTKEY, units, length, reinterpret_cast<wchar_t*>(keys.data() + start),
                  needed, nullptr, nullptr, 0);
    if (needed > 0)
        keys.pop_back(); // the closing zero
}

void keepFreedMemory() {} // the process heap does so by itself

void LargeMemoryReturner::operator()(void* memory) const
{
    VirtualFree(memory, 0, MEM_RELEASE);
}

LargeMemory largeMemory(std::size_t bytes)
{
    // Large pages would need a privilege that ordinary users do not have.
    void* const memory = VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (memory == nullptr)
        throw std::bad_alloc();
    return LargeMemory(memory, {bytes});
}

OpenOutcome openWithAssociatedApplication(const QString& path)
{
    const QString native = QDir::toNativeSeparators(path);
    const auto result = reinterpret_cast<INT_PTR>(
        ShellExecuteW(GetDesktopWindow(), L"open", wide(native), L"", L"", SW_SHOW));
    if (result == SE_ERR_NOASSOC)
        return OpenOutcome::NoAssociation;
    return result > 32 ? OpenOutcome::Opened : OpenOutcome::OtherFailure;
}

bool isOrdinaryFile(const QString& path)
{
    // A file with the attribute hidden or system counts as missing.
    const DWORD attributes = GetFileAttributesW(wide(QDir::toNativeSeparators(path)));
    constexpr DWORD extraordinary =
        FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & extraordinary) == 0;
}

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

bool mayWriteIn(const QString& folder)
{
    return mayOpen(folder, FILE_ADD_FILE, FILE_FLAG_BACKUP_SEMANTICS);
}

bool mayRead(const QString& path)
{
    return mayOpen(path, GENERIC_READ, 0);
}

bool mayReadAndWrite(const QString& path)
{
    return mayOpen(path, GENERIC_READ | GENERIC_WRITE, 0);
}

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
