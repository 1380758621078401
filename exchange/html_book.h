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

/// Writes the open database as a book of HTML pages to be read from the disk: a page for each datum and each category,
/// an index with the categories as a tree, and a search (see docs/exchange.md). Not trapped: as with `exportArchive`.
ExportReport exportHtmlBook(Session& session, const QString& folder, Progress* progress = nullptr);

} // namespace quillon::exchange
