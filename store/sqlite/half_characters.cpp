#include "store/sqlite/half_characters.h"

namespace quillon::sqlite
{

namespace
{

constexpr qsizetype BytesOfHalf = 3;

int valueOf(char byte)
{
    return static_cast<unsigned char>(byte);
}

/// Where the first half stands from a place on; the end when there is none.
qsizetype halfFrom(QByteArrayView bytes, qsizetype from)
{
    constexpr char Lead = '\xED';
    for (qsizetype at = bytes.indexOf(Lead, from); at >= 0; at = bytes.indexOf(Lead, at + 1)) {
        if (bytes.size() - at >= BytesOfHalf && valueOf(bytes[at + 1]) >= 0xA0 &&
            valueOf(bytes[at + 1]) <= 0xBF && (valueOf(bytes[at + 2]) & 0xC0) == 0x80)
            return at;
    }
    return bytes.size();
}

} // namespace

QByteArray bytesWithHalves(QStringView text)
{
    QByteArray bytes;
    while (!text.isEmpty()) {
        qsizetype whole = 0;
        while (whole < text.size()) {
            const bool isPair =
                text[whole].isHighSurrogate() && whole + 1 < text.size() && text[whole + 1].isLowSurrogate();
            if (!isPair && text[whole].isSurrogate())
                break;
            whole += isPair ? 2 : 1;
        }
        bytes += text.first(whole).toUtf8();
        if (whole == text.size())
            break;
        const int half = text[whole].unicode();
        for (const int byte : {0xE0 | half >> 12, 0x80 | (half >> 6 & 0x3F), 0x80 | (half & 0x3F)})
            bytes += static_cast<char>(static_cast<unsigned char>(byte));
        text = text.sliced(whole + 1);
    }
    return bytes;
}

std::optional<QString> textWithHalves(QByteArrayView bytes)
{
    qsizetype half = halfFrom(bytes, 0);
    if (half == bytes.size())
        return std::nullopt;
    QString text;
    qsizetype done = 0;
    for (; half < bytes.size(); half = halfFrom(bytes, done)) {
        text += QString::fromUtf8(bytes.sliced(done, half - done));
        text += QChar(static_cast<char16_t>(0xD000 | (valueOf(bytes[half + 1]) & 0x3F) << 6 |
                                            (valueOf(bytes[half + 2]) & 0x3F)));
        done = half + BytesOfHalf;
    }
    text += QString::fromUtf8(bytes.sliced(done));
    return text;
}

} // namespace quillon::sqlite
