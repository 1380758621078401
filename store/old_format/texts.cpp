#include "store/old_format/texts.h"

#include "app/base/platform/code_page.h"
#include "store/old_format/little_endian.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::old_format
{

namespace
{

bool isPlain(QByteArrayView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

DecodedText decodedFrom932(QByteArrayView bytes)
{
    // Most identifiers and many names need no table.
    if (isPlain(bytes))
        return {.text = QString::fromLatin1(bytes)};
    if (auto text = platform::decode932(bytes))
        return {.text = std::move(*text)};
    return {.text = platform::decode932Forgivingly(bytes), .isWhole = false};
}

DecodedText decodedFromUtf16(QByteArrayView bytes)
{
    DecodedText decoded{.text = QString(bytes.size() / 2, Qt::Uninitialized),
                        .isWhole = bytes.size() % 2 == 0};
    qFromLittleEndian<char16_t>(bytes.data(), decoded.text.size(), decoded.text.data());
    return decoded;
}

constexpr QByteArrayView CompressionMark("\xFF\xFE", 2);

/// Characters below U+0100 as one byte each; a zero byte changes to characters of two bytes, and back.
DecodedText decompressed(QByteArrayView bytes)
{
    DecodedText decoded;
    decoded.text.reserve(bytes.size());
    bool isNarrow = true;
    for (qsizetype at = 0; at < bytes.size();) {
        const quint8 byte = byteAt(bytes, at);
        if (byte == 0) {
            isNarrow = !isNarrow;
            ++at;
        } else if (isNarrow) {
            decoded.text += QChar(static_cast<char16_t>(byte));
            ++at;
        } else if (holds(bytes, at, 2)) {
            decoded.text += QChar(numberAt<char16_t>(bytes, at));
            at += 2;
        } else {
            decoded.isWhole = false;
            break;
        }
    }
    return decoded;
}

} // namespace

DecodedText decoded(const Pages& pages, QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return {.text = u""_s};
    if (pages.isFormatThree())
        return decodedFrom932(bytes);
    if (bytes.startsWith(CompressionMark))
        return decompressed(bytes.sliced(CompressionMark.size()));
    return decodedFromUtf16(bytes);
}

} // namespace quillon::old_format
