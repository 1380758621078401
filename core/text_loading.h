#pragma once

#include <QByteArrayView>
#include <QString>

namespace quillon
{

class Files;
struct DataKind;

/// How many bytes a text file can have whose text a document can hold; in the longest encoding, with a mark.
qint64 mostBytesOfText();

/// The text of a text file for the content of a datum. Error 6 when it is more than a document can hold; 53, 70, 75.
QString loadText(const Files& files, const QString& path, const DataKind& kind);
/// The same for bytes from elsewhere; `mostBytesOfText` and one more tell that there are too many.
QString textOfBytes(QByteArrayView bytes, const DataKind& kind);

} // namespace quillon
