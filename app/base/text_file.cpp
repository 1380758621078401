#include "app/base/text_file.h"

#include "app/base/platform/code_page.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <optional>

namespace quillon
{

namespace
{

struct Mark {
    QByteArrayView bytes;
    TextEncoding encoding = TextEncoding::Utf8;
};

const std::array<Mark, 3>& marks()
{
    static const std::array<Mark, 3> all = {{{"\xEF\xBB\xBF", TextEncoding::Utf8},
                                             {"\xFF\xFE", TextEncoding::Utf16LittleEndian},
                                             {"\xFE\xFF", TextEncoding::Utf16BigEndian}}};
    return all;
}

bool hasLongCharacter(QByteArrayView bytes)
{
    constexpr uchar FirstOfThreeBytes = 0xE0;
    return std::any_of(bytes.begin(), bytes.end(),
                       [](char byte) { return static_cast<uchar>(byte) >= FirstOfThreeBytes; });
}

QString decodeUnicode(QByteArrayView bytes, QStringConverter::Encoding encoding)
{
    // The mark at the front is cut off already: another one is text.
    return QStringDecoder(encoding,
                          QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom)
        .decode(bytes);
}

} // namespace

qsizetype markLength(QByteArrayView bytes, TextEncoding encoding)
{
    for (const Mark& mark : marks()) {
        if (mark.encoding == encoding && bytes.startsWith(mark.bytes))
            return mark.bytes.size();
    }
    return 0;
}

QString decodeText(QByteArrayView bytes, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf8:
        return decodeUnicode(bytes, QStringConverter::Utf8);
    case TextEncoding::Utf16LittleEndian:
        return decodeUnicode(bytes, QStringConverter::Utf16LE);
    case TextEncoding::Utf16BigEndian:
        return decodeUnicode(bytes, QStringConverter::Utf16BE);
    case TextEncoding::CodePage932:
    case TextEncoding::NoneOfThese:
        break;
    }
    if (const auto text = platform::decode932(bytes))
        return *text;
    return platform::decode932Forgivingly(bytes);
}

TextEncoding tellEncoding(const TextPieces& forEachPiece)
{
    std::optional<TextEncoding> marked;
    bool isFirst = true;
    bool isUtf8 = true;
    bool isLong = false;
    forEachPiece([&](QByteArrayView piece) {
        for (const Mark& mark : marks()) {
            if (isFirst && piece.startsWith(mark.bytes))
                marked = mark.encoding;
        }
        isFirst = false;
        isUtf8 = isUtf8 && piece.isValidUtf8();
        isLong = isLong || hasLongCharacter(piece);
        return !marked && isUtf8;
    });
    if (marked)
        return *marked;
    // Japanese in UTF-8 may look like rare characters of 932, but hardly the other way round. Characters of two bytes
    // prove nothing: half-width katakana of 932 look like them.
    if (isUtf8 && isLong)
        return TextEncoding::Utf8;
    bool is932 = true;
    forEachPiece([&](QByteArrayView piece) {
        is932 = platform::decode932(piece).has_value();
        return is932;
    });
    if (is932)
        return TextEncoding::CodePage932;
    return isUtf8 ? TextEncoding::Utf8 : TextEncoding::NoneOfThese;
}

QString decodeTextFile(QByteArrayView bytes)
{
    const TextEncoding encoding =
        tellEncoding([&](const std::function<bool(QByteArrayView)>& take) { take(bytes); });
    return decodeText(bytes.sliced(markLength(bytes, encoding)), encoding);
}

} // namespace quillon
