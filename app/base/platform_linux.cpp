#include "app/base/platform.h"

#include "app/base/error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

// GIO names members "signals", which is why the project is built without Qt's keywords.
#include <fcntl.h>
#include <gio/gio.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucol.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

namespace
{

// The Microsoft-style table: NEC and IBM extensions, and the backslash at 0x5C.
constexpr const char* CodePage932 = "ibm-943_P15A-2003";

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

Converter openConverter()
{
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open(CodePage932, &status));
    if (U_FAILURE(status))
        throw Error(errors::InvalidArgument,
                    u"コードページ 932 の変換表が見つかりません。ICU を導入し直してください。"_s);
    return converter;
}

using LengthTable = std::array<quint8, 0x10000>;

/// How many bytes each UTF-16 code unit takes: units are converted independently of each other, because everything
/// that would need two of them is outside the page.
LengthTable makeLengthTable()
{
    LengthTable lengths;
    lengths.fill(1);
    const Converter converter = openConverter();
    ucnv_setFallback(converter.get(), false);
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setSubstChars(converter.get(), "?", 1, &status);
    for (int unit = 0; unit < 0x10000; ++unit) {
        if (QChar::isSurrogate(static_cast<char32_t>(unit)))
            continue;
        const UChar text = static_cast<UChar>(unit);
        char bytes[8];
        status = U_ZERO_ERROR;
        if (ucnv_fromUChars(converter.get(), bytes, sizeof bytes, &text, 1, &status) == 2 &&
            U_SUCCESS(status))
            lengths[static_cast<std::size_t>(unit)] = 2;
    }
    // Windows writes these seven like their full-width twins (— 〜 ‖ − ¢ £ ¬); other tables do not know them.
    for (const char16_t twin : {u'\u2014', u'\u301C', u'\u2016', u'\u2212', u'\u00A2', u'\u00A3', u'\u00AC'})
        lengths[twin] = 2;
    return lengths;
}

QString stateFolder()
{
    const QString home = qEnvironmentVariable("XDG_STATE_HOME");
    // A relative value is to be ignored.
    if (QDir::isAbsolutePath(home))
        return home + u"/quillon"_s;
    return QDir::homePath() + u"/.local/state/quillon"_s;
}

bool appendLine(const QString& path, const QString& line)
{
    // A log that is a pipe or a device would block or swallow the line.
    if (QFileInfo::exists(path) && !isOrdinaryFile(path))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    const QByteArray bytes = line.toUtf8() + '\n';
    return file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

QStringList arguments(int count, char** words)
{
    QStringList list;
    for (int i = 0; i < count; ++i)
        list << QFile::decodeName(words[i]);
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

namespace
{

/// The bytes as text by the converter's present rules, or nothing when it stops at them.
std::optional<QString> decode(UConverter* converter, QByteArrayView bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    auto* target = reinterpret_cast<UChar*>(text.data());
    UChar* const targetStart = target;
    const char* source = bytes.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(converter, &target, target + text.size(), &source, source + bytes.size(), nullptr, true,
                   &status);
    if (U_FAILURE(status))
        return std::nullopt;
    text.resize(target - targetStart);
    // The table follows an old convention that rotates three control characters.
    for (QChar& character : text) {
        if (character == u'\x1C')
            character = u'\x1A';
        else if (character == u'\x7F')
            character = u'\x1C';
        else if (character == u'\x1A')
            character = u'\x7F';
    }
    return text;
}

/// Stands in for bytes that are not valid; called back by the converter.
void writeMiddleDot(const void*, UConverterToUnicodeArgs* arguments, const char*, int32_t,
                    UConverterCallbackReason reason, UErrorCode* status)
{
    if (reason > UCNV_IRREGULAR)
        return; // the converter is only being reset or closed
    static const UChar dot = u'・';
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(arguments, &dot, 1, 0, status);
}

} // namespace

std::optional<QString> decode932(QByteArrayView bytes)
{
    const Converter converter = openConverter();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    return decode(converter.get(), bytes);
}

QString decode932Forgivingly(QByteArrayView bytes)
{
    const Converter converter = openConverter();
    // The converter's own substitute would be a control character where a single byte is wrong.
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter.get(), writeMiddleDot, nullptr, nullptr, nullptr, &status);
    return decode(converter.get(), bytes).value_or(QString());
}

struct Collator::Handle {
    UCollator* collator = nullptr;

    Handle() = default;
    ~Handle() { ucol_close(collator); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
};

Collator::Collator() : m_handle(std::make_unique<Handle>())
{
    UErrorCode status = U_ZERO_ERROR;
    m_handle->collator = ucol_open("ja", &status);
    if (U_FAILURE(status))
        throw Error(errors::InvalidArgument,
                    u"日本語の並べ替え規則が見つかりません。ICU を導入し直してください。"_s);
}

Collator::~Collator() = default;

void Collator::appendKey(QStringView text, std::string& keys) const
{
    const auto* units = reinterpret_cast<const UChar*>(text.utf16());
    const auto length =
        static_cast<int32_t>(std::min<qsizetype>(text.size(), std::numeric_limits<int32_t>::max()));
    const std::size_t start = keys.size();
    keys.resize(start + static_cast<std::size_t>(length) * 4 + 16);
    auto room = static_cast<int32_t>(keys.size() - start);
    int32_t needed = ucol_getSortKey(m_handle->collator, units, length,
                                     reinterpret_cast<uint8_t*>(keys.data() + start), room);
    if (needed > room) {
        keys.resize(start + static_cast<std::size_t>(needed));
        needed = ucol_getSortKey(m_handle->collator, units, length,
                                 reinterpret_cast<uint8_t*>(keys.data() + start), needed);
    }
    // The key ends in a zero byte that no key contains; without it keys still compare alike.
    keys.resize(start + static_cast<std::size_t>(std::max(needed - 1, 0)));
}

void keepFreedMemory()
{
#ifdef __GLIBC__
    constexpr int Kept = 512 * 1024 * 1024; // bytes at the end of the heap
    constexpr int Step = 16 * 1024 * 1024;
    mallopt(M_MMAP_MAX, 0); // large blocks, too, come from the heap
    mallopt(M_TRIM_THRESHOLD, Kept);
    mallopt(M_TOP_PAD, Step);
#endif
}

void LargeMemoryReturner::operator()(void* memory) const
{
    std::free(memory);
}

LargeMemory largeMemory(std::size_t bytes)
{
    // From the heap, which keeps what is given back: memory that is new to the process costs more than filling it.
    void* const memory = std::malloc(bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    constexpr std::size_t LargePage = std::size_t{2} << 20;
    if (bytes >= LargePage) {
        const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        const auto start = reinterpret_cast<std::uintptr_t>(memory);
        const std::uintptr_t first = (start + page - 1) / page * page;
        const std::uintptr_t end = (start + bytes) / page * page;
        // Where the system refuses, small pages do.
        madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
    }
    return LargeMemory(memory, {bytes});
}

OpenOutcome openWithAssociatedApplication(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    GFile* file = g_file_new_for_path(name.constData());
    GError* error = nullptr;
    GAppInfo* application = g_file_query_default_handler(file, nullptr, &error);
    OpenOutcome outcome = OpenOutcome::OtherFailure;
    if (application != nullptr) {
        GList* files = g_list_append(nullptr, file);
        if (g_app_info_launch(application, files, nullptr, &error) != 0)
            outcome = OpenOutcome::Opened;
        g_list_free(files);
        g_object_unref(application);
    } else if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED) != 0) {
        outcome = OpenOutcome::NoAssociation;
    }
    g_clear_error(&error);
    g_object_unref(file);
    return outcome;
}

bool isOrdinaryFile(const QString& path)
{
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 && S_ISREG(status.st_mode);
}

namespace
{

/// Throws the failure that the system's last error stands for.
[[noreturn]] void throwLastError(qint32 whenMissing)
{
    switch (errno) {
    case ENOENT:
    case ENOTDIR:
        throw Error(whenMissing);
    case EACCES:
    case EPERM:
    case EROFS:
        throw Error(errors::PermissionDenied);
    case ENOSPC:
    case EDQUOT:
        throw Error(errors::DiskFull);
    default:
        throw Error(errors::PathFileAccess);
    }
}

/// An open file of the system.
class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// A file that is gone again unless it is kept. Where the file system can, it has no name until then, so that not even
/// the end of the program leaves it behind.
class FileBeside
{
public:
    explicit FileBeside(const QByteArray& folder) : m_pattern(folder + "/.quillon-XXXXXX"), m_file(make())
    {
        if (m_file < 0)
            throwLastError(errors::PathNotFound);
    }
    ~FileBeside()
    {
        if (!m_name.isEmpty())
            unlink(m_name.constData());
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    int file() const { return m_file; }
    /// Gives the file its name, in place of a file that has it.
    void keepAs(const QByteArray& name)
    {
        if (m_name.isEmpty()) {
            if (giveName(name))
                return;
            nameBeside();
        }
        if (rename(m_name.constData(), name.constData()) != 0)
            throwLastError(errors::PathNotFound);
        m_name.clear();
    }

private:
    int make()
    {
        if (canNameLater()) {
            const int nameless = makeNameless();
            if (nameless >= 0)
                return nameless;
        }
        m_name = m_pattern;
        const int named = mkostemp(m_name.data(), O_CLOEXEC);
        if (named < 0)
            m_name.clear();
        return named;
    }
    int makeNameless() const
    {
        const QByteArray folder = m_pattern.first(m_pattern.lastIndexOf('/') + 1);
        return open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }
    /// Tries it with an empty file: some systems make nameless files and refuse to name them, which would be known
    /// only after everything has been copied.
    bool canNameLater() const
    {
        const Descriptor trial(makeNameless());
        if (trial < 0)
            return false;
        const QByteArray name = freeName();
        const bool named = !name.isEmpty() && link(trial, name);
        if (named)
            unlink(name.constData());
        return named;
    }
    /// Only the process's own list of files leads from a file without a name to one with a name.
    static bool link(int file, const QByteArray& name)
    {
        const QByteArray self = "/proc/self/fd/" + QByteArray::number(file);
        return linkat(AT_FDCWD, self.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0;
    }
    /// A name in the folder that nothing has; empty after a failure.
    QByteArray freeName() const
    {
        QByteArray name = m_pattern;
        const Descriptor placeholder(mkostemp(name.data(), O_CLOEXEC));
        if (placeholder < 0)
            return {};
        unlink(name.constData());
        return name;
    }
    /// Names the nameless file; false when something has this name.
    bool giveName(const QByteArray& name) const
    {
        if (link(m_file, name))
            return true;
        if (errno != EEXIST)
            throwLastError(errors::PathNotFound);
        return false;
    }
    /// Names the nameless file for the moment before it replaces another.
    void nameBeside()
    {
        while (m_name.isEmpty()) {
            const QByteArray name = freeName();
            if (name.isEmpty())
                throwLastError(errors::PathNotFound);
            if (giveName(name))
                m_name = name;
        }
    }

    QByteArray m_pattern;
    QByteArray m_name; // as long as it is a name for the time being
    Descriptor m_file;
};

void copyBytes(int from, int to, qint64 total, const Files::Progress& progress)
{
    std::vector<char> buffer(std::size_t{1} << 20);
    qint64 done = 0;
    for (;;) {
        const ssize_t count = read(from, buffer.data(), buffer.size());
        if (count == 0)
            return;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            throwLastError(errors::FileNotFound);
        }
        for (ssize_t written = 0; written < count;) {
            const ssize_t part =
                write(to, buffer.data() + written, static_cast<std::size_t>(count - written));
            if (part >= 0)
                written += part;
            else if (errno != EINTR)
                throwLastError(errors::PathNotFound);
        }
        done += count;
        if (progress)
            progress(done, total);
    }
}

} // namespace

void copyFile(const QString& source, const QString& folder, const QString& name,
              const Files::Progress& progress)
{
    // A pipe must not be waited for, not even in opening it.
    const Descriptor from(open(QFile::encodeName(source).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (from < 0)
        throwLastError(errors::FileNotFound);
    struct stat status = {};
    if (fstat(from, &status) != 0 || !S_ISREG(status.st_mode))
        throw Error(errors::PathFileAccess);
    const QByteArray inFolder = QFile::encodeName(folder);
    FileBeside copy(inFolder);
    copyBytes(from, copy.file(), status.st_size, progress);
    // The copy can be read by whoever could read the file, and be written by its owner. Where the file system knows no
    // such permissions, as on many a memory stick, it has its own.
    static_cast<void>(fchmod(copy.file(), (status.st_mode & 0777) | S_IRUSR | S_IWUSR));
    if (fsync(copy.file()) != 0)
        throwLastError(errors::PathNotFound);
    copy.keepAs(inFolder + '/' + QFile::encodeName(name));
    const Descriptor entries(open(inFolder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (entries >= 0)
        fsync(entries); // the new name, too, outlives a power failure
}

bool mayWriteIn(const QString& folder)
{
    return faccessat(AT_FDCWD, QFile::encodeName(folder).constData(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool mayRead(const QString& path)
{
    return faccessat(AT_FDCWD, QFile::encodeName(path).constData(), R_OK, AT_EACCESS) == 0;
}

bool mayReadAndWrite(const QString& path)
{
    return faccessat(AT_FDCWD, QFile::encodeName(path).constData(), R_OK | W_OK, AT_EACCESS) == 0;
}

void writeEventLog(const QString& line, const QString& programFolder)
{
    // There is no application log here that a user can read.
    const QString name = u"/Quillon.log"_s;
    if (mayWriteIn(programFolder) && appendLine(programFolder + name, line))
        return;
    const QString folder = stateFolder();
    if (QDir().mkpath(folder))
        appendLine(folder + name, line);
}

} // namespace quillon::platform
