#include "app/base/platform.h"

#include "app/base/error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

// GIO names members "signals", which is why the project is built without Qt's keywords.
#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unistd.h>

#include <array>
#include <limits>
#include <string>

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

std::optional<QString> decode932(QByteArrayView bytes)
{
    const Converter converter = openConverter();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    QString text(bytes.size(), Qt::Uninitialized);
    auto* target = reinterpret_cast<UChar*>(text.data());
    UChar* const targetStart = target;
    const char* source = bytes.data();
    ucnv_toUnicode(converter.get(), &target, target + text.size(), &source, source + bytes.size(), nullptr,
                   true, &status);
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

bool mayWriteIn(const QString& folder)
{
    return faccessat(AT_FDCWD, QFile::encodeName(folder).constData(), W_OK | X_OK, AT_EACCESS) == 0;
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
