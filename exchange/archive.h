#pragma once

#include "exchange/report.h"

#include <QString>

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

class Progress;

/// Writes the whole open database and the files of the folder of registered files into a new folder, so that nothing is
/// lost (see docs/exchange.md). Not trapped: `Refused` when something stands there; 61, 70, 75, 76, 3260.
ExportReport exportArchive(Session& session, const QString& folder, Progress* progress = nullptr);

/// Brings an archive into the open database, as one write, its files included, or not at all. How it meets with what is
/// there already: see `Merging`; a file whose name another file has there gets a new name. The folder of registered
/// files is made if need be.
/// Not trapped: `Refused` for what is no archive or a damaged one; 53, 61, 70, 75, 76, 3260.
ImportReport importArchive(Session& session, const QString& folder, const ImportOptions& options = {},
                           Progress* progress = nullptr);

} // namespace quillon::exchange
