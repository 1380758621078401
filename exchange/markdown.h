#pragma once

#include "exchange/source_texts.h"

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

class Progress;

/// Writes every datum of the open database as a note of its own into a new folder, with its categories as tags and its
/// links as [[links]]; registered files lie beside them in RefFile (see docs/exchange.md). Not trapped: as with
/// `exportArchive`.
ExportReport exportMarkdown(Session& session, const QString& folder, Progress* progress = nullptr);

/// Brings the notes of a folder in: each is a document, or a definition where its head says so or where it has no text
/// at all. Not trapped: `Refused`, and errors of reading.
ImportReport importMarkdown(Session& session, const QString& folder, const TextImportOptions& options = {},
                            Progress* progress = nullptr);

} // namespace quillon::exchange
