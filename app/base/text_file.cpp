#include "app/base/text_file.h"

#include "app/base/platform/code_page.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>

namespace quillon
{

QString decodeTextFile(QByteArrayView bytes)
{
    struct Mark {
        QByteArrayView bytes;
        QStringConverter::Encoding encoding = QStringConverter::Utf8;
    };
    static const std::array marks = {Mark{"\xEF\xBB\xBF", QStringConverter::Utf8},
                                     Mark{"\xFF\xFE", QStringConverter::Utf16LE},
                                     Mark{"\xFE\xFF", QStringConverter::Utf16BE}};
    for (const Mark& mark : marks) {
        if (bytes.startsWith(mark.bytes))
            return QStringDecoder(mark.encoding, QStringConverter::Flag::Stateless)
                .decode(bytes.sliced(mark.bytes.size()));
    }
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QString fromUtf8 = utf8.decode(bytes);
    const bool isUtf8 = !utf8.hasError();
    // Japanese in UTF-8 may look like rare characters of 932, but hardly the other way round. Characters of two bytes
    // prove nothing: half-width katakana of 932 look like them.
    constexpr uchar FirstOfThreeBytes = 0xE0;
    const bool hasLongCharacter = std::any_of(
        bytes.begin(), bytes.end(), [](char byte) { return static_cast<uchar>(byte) >= FirstOfThreeBytes; });
    if (isUtf8 && hasLongCharacter)
        return fromUtf8;
    if (const auto text = platform::decode932(bytes))
        return *text;
    return isUtf8 ? fromUtf8 : platform::decode932Forgivingly(bytes);
}

} // namespace quillon
