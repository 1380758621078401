#pragma once

#include "app/base/ports/desktop.h"
#include "app/base/ports/files.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstddef>
#include <memory>
#include <optional>

/// Everything that differs between the operating systems: one file per platform implements this header.
namespace quillon::platform
{

/// The words of the command line, the program's own first, with every character they may hold.
QStringList arguments(int count, char** words);

/// Bytes of `text` in code page 932 as Windows converts it: one per half-width character, two per full-width one.
/// A character that the page lacks counts as one "?" per UTF-16 code unit.
qsizetype byteLength932(QStringView text);

/// `bytes` of code page 932 as text, or nothing when they are not valid in it.
std::optional<QString> decode932(QByteArrayView bytes);
/// The same for any bytes: what is not valid becomes "・", as Windows converts it.
QString decode932Forgivingly(QByteArrayView bytes);

/// Makes keys that sort as a Japanese reader sorts (the ja locale): compare them byte by byte.
class Collator
{
public:
    Collator();
    ~Collator();
    Collator(const Collator&) = delete;
    Collator& operator=(const Collator&) = delete;

    /// Appends the key of `text` to `keys`.
    void appendKey(QStringView text, std::string& keys) const;

private:
    struct Handle;
    std::unique_ptr<Handle> m_handle;
};

/// Lets the process keep what a long list gives back, for the next one: otherwise every list that is shown asks the
/// system for its memory again, page by page. To be called once, when the program starts.
void keepFreedMemory();

struct LargeMemoryReturner {
    void operator()(void* memory) const;
    std::size_t bytes = 0;
};

using LargeMemory = std::unique_ptr<void, LargeMemoryReturner>;

/// Memory for many megabytes that are gone through from end to end, in large pages where the system has them: with small
/// ones, finding the pages takes as long as reading what stands in them.
LargeMemory largeMemory(std::size_t bytes);

/// Opens a file with its associated application without waiting and without a shell.
OpenOutcome openWithAssociatedApplication(const QString& path);

/// Whether an ordinary visible file stands at `path`: no folder, device or pipe (links are followed).
bool isOrdinaryFile(const QString& path);

/// Copies an ordinary file to `name` in `folder` by way of a file beside it, so that a file of that name is replaced
/// as a whole or not at all. The copy is on the disk when this returns.
/// Errors: 53 no such source, 76 no such folder, 70 no access, 61 full, 75 anything else.
void copyFile(const QString& source, const QString& folder, const QString& name,
              const Files::Progress& progress);

/// Whether this process may create files in `folder`.
bool mayWriteIn(const QString& folder);

/// Whether this process may read the file at `path`.
bool mayRead(const QString& path);

/// Whether this process may read and write the file at `path`.
bool mayReadAndWrite(const QString& path);

/// Writes one line to the operating system's application log where there is one a user can read, else to
/// "Quillon.log" in `programFolder`, or in the user's state folder where that is not writable.
/// Failures are ignored.
void writeEventLog(const QString& line, const QString& programFolder);

} // namespace quillon::platform
