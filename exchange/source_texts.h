#pragma once

#include "exchange/report.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace quillon::exchange
{

class NewData;
struct NewDatum;

/// What becomes of a text that is longer than a document may be.
enum class LongTexts {
    Refuse, ///< and with it the whole import
    Split   ///< into several documents, which are linked one with the next
};

/// What an import of a folder of texts is told.
struct TextImportOptions : ImportOptions {
    LongTexts longTexts = LongTexts::Refuse;
};

/// The ordinary files with one of these endings, or all of them, in a folder and in what lies below it, by their paths within it, in
/// their order. What begins with a dot is left out, and links to folders are not followed. Throws `Refused` when there
/// is no such folder.
QStringList filesBelow(const QString& folder, const QStringList& endings);

/// The text of a text file, whatever its encoding.
struct SourceText {
    std::optional<QString> text;
    QString whyNot = {}; // when there is none
};
/// Errors: 6 when it is unreasonably large, 53, 70, 75; they tell the path.
SourceText textOf(const QString& path);

/// Adds a datum that was a file: its name is brought on one line and cut to what a name may be, which is told. A text
/// that is too long is treated as is said. One with the limits of the database stays as it is. Returns the identifier of the datum, of the first one of several; nothing
/// when it is refused.
QString addText(NewData& data, NewDatum datum, LongTexts longTexts, std::vector<Note>& notes);

} // namespace quillon::exchange
