#include "app/base/text_file.h"

#include "app/base/platform/code_page.h"

#include <QStringDecoder>

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
    if (const auto text = platform::decode932(bytes))
        return *text;
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = utf8.decode(bytes);
    return utf8.hasError() ? platform::decode932Forgivingly(bytes) : text;
}

} // namespace quillon
