#include "app/base/platform/code_page.h"

#include "app/base/error.h"
#include "app/base/platform/widths_of_windows.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <array>
#include <memory>

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

/// How many bytes each UTF-16 code unit takes: units are converted independently of each other, because everything
/// that would need two of them is outside the page.
LengthTable makeLengthTable()
{
    LengthTable lengths;
    lengths.fill(1);
    const Converter converter = openConverter();
    ucnv_setFallback(converter.get(), static_cast<UBool>(false));
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setSubstChars(converter.get(), "?", 1, &status);
    for (int unit = 0; unit < 0x10000; ++unit) {
        if (QChar::isSurrogate(static_cast<char32_t>(unit)))
            continue;
        const auto text = static_cast<UChar>(unit);
        std::array<char, 8> bytes = {};
        status = U_ZERO_ERROR;
        if (ucnv_fromUChars(converter.get(), bytes.data(), bytes.size(), &text, 1, &status) == 2 &&
            U_SUCCESS(status))
            lengths[static_cast<std::size_t>(unit)] = 2;
    }
    setWidthsOfWindows(lengths);
    return lengths;
}

} // namespace

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
    ucnv_toUnicode(converter, &target, target + text.size(), &source, source + bytes.size(), nullptr,
                   static_cast<UBool>(true), &status);
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

} // namespace quillon::platform
