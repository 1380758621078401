#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <optional>

namespace quillon::platform
{

/// Bytes of `text` in code page 932 as Windows converts it: one per half-width character, two per full-width one.
/// A character that the page lacks counts as one "?" per UTF-16 code unit.
qsizetype byteLength932(QStringView text);

/// `bytes` of code page 932 as text, or nothing when they are not valid in it.
std::optional<QString> decode932(QByteArrayView bytes);
/// The same for any bytes: what is not valid becomes "・", as Windows converts it.
QString decode932Forgivingly(QByteArrayView bytes);

} // namespace quillon::platform
