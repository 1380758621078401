#pragma once

#include "exchange/progress.h"
#include "exchange/report.h"

#include <QString>

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

/// Whether the file at `path` begins like one of the older engine's; false also when it cannot be read.
bool isOldFile(const QString& path);

/// A copy of such a file as a database of today.
struct ConvertedFile {
    QString path;
    ImportReport report;
};

/// Makes a copy of the database in an old file beside it, as a whole or not at all: "NAME-変換.mdb", or the next name
/// that is free. The rows are the same, one by one; only where two have one identifier, which a damaged file may hold,
/// the second gets another. The old file is only read.
/// Errors: those of reading and of creating a file, 3343 when the file cannot be read, `Refused` when it is no database
/// of ours, `Cancelled`.
ConvertedFile convertOldFile(const QString& source, Progress* progress = nullptr);

/// Writes all notes about a converted file into a text file beside it, of its name or the next one that is free, and
/// returns that file's name. Errors: 61, 70, 75, 76.
QString writeNotes(const ConvertedFile& converted);

/// Brings the database in an old file into the open one, as one write or not at all. How it meets with what is there
/// already: see `Merging`. Not trapped: as above; 3260.
ImportReport importOldFile(Session& session, const QString& source, const ImportOptions& options = {},
                           Progress* progress = nullptr);

} // namespace quillon::exchange
