#pragma once

#include "store/kept/copies.h"

#include <QDateTime>
#include <QString>

#include <optional>
#include <vector>

namespace quillon
{

class Session;

/// A database for which something is kept.
struct KeptDatabase {
    QString path;
    QDateTime copied;  // when the newest copy was made; invalid: there is none
    QDateTime changed; // when something was last overwritten or deleted in it; invalid: never
};

/// All of them, those that were changed last first; also such as are damaged or gone.
std::vector<KeptDatabase> ListKeptDatabases(Session& session);

/// The kept copies of a database, newest first; also of one that is damaged or gone. Empty when nothing is kept.
std::vector<kept::Copy> ListCopies(Session& session, const QString& database);

/// What became of the registered files of a copy.
struct TakenOutFiles {
    int written = 0;
    int same = 0;      // were there already
    int different = 0; // another content has the name; it stays
    int lost = 0;      // their contents are not kept
};

/// Writes a kept copy as a new file, and the registered files that it knew into the folder for them beside it, where
/// nothing has their names. Nothing when a failure was reported, as "TakeOutCopy": 3204 for a file that is there already,
/// 75 where a journal of a former database would be played into it, 3343 for a copy that is not what it was any more. A failure of the registered files is reported as "TakeOutFiles" and
/// leaves the rest of them away.
std::optional<TakenOutFiles> TakeOutCopy(Session& session, const kept::Copy& copy, const QString& newFile);

} // namespace quillon
