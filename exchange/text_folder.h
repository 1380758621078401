#pragma once

#include "exchange/source_texts.h"

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

class Progress;

/// Brings the text files of a folder in, each as a document; the folders in it become categories. What is empty is passed
/// over and told. Not trapped: `Refused`, and errors of reading.
ImportReport importTexts(Session& session, const QString& folder, const TextImportOptions& options = {},
                         Progress* progress = nullptr);

} // namespace quillon::exchange
