#pragma once

#include <QByteArrayView>
#include <QString>

#include <functional>

namespace quillon
{

/// What a text file can be written in.
enum class TextEncoding {
    Utf8,
    Utf16LittleEndian,
    Utf16BigEndian,
    CodePage932,
    NoneOfThese ///< read like code page 932; what is not valid in it becomes "・"
};

/// How many bytes the byte order mark takes at the beginning of a file in an encoding, if it has one.
qsizetype markLength(QByteArrayView bytes, TextEncoding encoding);

/// Bytes of one encoding as text; without their mark, and cut where a character ends.
QString decodeText(QByteArrayView bytes, TextEncoding encoding);

/// The encoding of a text. A byte order mark (UTF-8, UTF-16) is obeyed; without one the bytes are code page 932, unless
/// they are valid UTF-8 with a character of three bytes or more, or not valid in it.
/// `forEachPiece` goes through the text, each time it is called, in pieces that end where lines end, as long as it is
/// answered true.
using TextPieces = std::function<void(const std::function<bool(QByteArrayView)>& take)>;
TextEncoding tellEncoding(const TextPieces& forEachPiece);

/// The text of a text file's bytes.
QString decodeTextFile(QByteArrayView bytes);

} // namespace quillon
