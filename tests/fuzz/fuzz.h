#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

/// What a fuzzer calls for every input. It fails by a crash, a complaint of a sanitizer, or too long a time; and by
/// `Q_ASSERT`-like checks of the target itself, which end the program.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quillon::testing
{

/// The input as a text. Its first byte tells whether the rest is UTF-8 or the text's own units, so that texts of half
/// characters come, too.
inline QString textOf(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return {};
    const QByteArray bytes(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1);
    if ((data[0] & 0x80) == 0)
        return QString::fromUtf8(bytes);
    QString units;
    for (qsizetype i = 0; i + 1 < bytes.size(); i += 2)
        units += QChar(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                             static_cast<unsigned char>(bytes[i + 1]) << 8));
    return units;
}

/// Ends the program when what must hold does not.
inline void require(bool holds, const char* what)
{
    if (!holds)
        qFatal("does not hold: %s", what);
}

} // namespace quillon::testing
