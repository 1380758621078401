#pragma once

#include "app/base/text_file.h"

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace quillon::exchange
{

/// How a text that comes in is encoded, told as the windows tell it, and whether all of it can be read so. A window
/// shows what cannot be read as "・", and somebody sees that; nobody looks at what comes in.
struct ReadableText {
    TextEncoding encoding = TextEncoding::Utf8;
    std::optional<qint64> badLine = {}; // the number of the first line that cannot be read
};

/// Looks at a whole text.
ReadableText lookAtText(const TextPieces& forEachPiece);

/// What a person reads of such a line.
QString badLineText(qint64 line);

} // namespace quillon::exchange
