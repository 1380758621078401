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

/// Writes every datum of the open database as a row with its categories and links: separated by tabs where the name
/// ends in ".tsv", else by commas (see docs/exchange.md). Not trapped: as with `exportArchive`.
ExportReport exportDelimited(Session& session, const QString& path, Progress* progress = nullptr);

/// Brings the rows of a file in, separated by commas or tabs, each as a definition or what its column says. The file may
/// be of any size. Not trapped: `Refused`, which tells the lines that are wrong, and errors of reading.
ImportReport importDelimited(Session& session, const QString& path, const ImportOptions& options = {},
                             Progress* progress = nullptr);

} // namespace quillon::exchange
