#pragma once

#include <QString>

namespace quillon::sqlite
{

/// Whether a journal stands beside the database file at `path` that would be played back: a write was broken off, or
/// another program is writing just now.
bool hasJournal(const QString& path);

/// Whether the journal of the database file at `path` names a further file, which lists the journals of several
/// databases: whoever plays it back deletes that file and what stands in it, whatever they are. Reads its end only.
bool journalNamesFurtherFiles(const QString& path);

} // namespace quillon::sqlite
