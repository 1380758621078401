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

/// Draws a datum, what it is linked with and what these are linked with as an SVG picture (see docs/exchange.md). Not
/// trapped: `Refused` when there is no such datum or something stands at `path`; 61, 70, 75, 76.
ExportReport exportPicture(Session& session, const QString& path, const QString& identifier);

/// Draws such a picture of every datum that has links, into a new folder.
ExportReport exportPictures(Session& session, const QString& folder, Progress* progress = nullptr);

} // namespace quillon::exchange
