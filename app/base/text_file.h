#pragma once

#include <QByteArrayView>
#include <QString>

namespace quillon
{

/// The text of a text file's bytes. A byte order mark (UTF-8, UTF-16) is obeyed; without one the bytes are code page
/// 932, unless they are valid UTF-8 with a character of three bytes or more, or not valid in it. What is valid in neither becomes "・".
QString decodeTextFile(QByteArrayView bytes);

} // namespace quillon
