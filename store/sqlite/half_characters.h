#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <optional>

namespace quillon::sqlite
{

// A file may keep its texts in UTF-8, which has no room for half of a character outside the basic plane, whereas the
// memory has. SQLite takes the half and what follows it for one character when it writes, and puts a replacement in its
// place when it reads. Between the two it passes bytes on as they are: a half is kept like a character of three bytes.

/// A text in UTF-8 with its halves.
QByteArray bytesWithHalves(QStringView text);

/// The text of such bytes; nothing when there is no half in them, so that anybody reads them rightly.
std::optional<QString> textWithHalves(QByteArrayView bytes);

} // namespace quillon::sqlite
