#pragma once

#include <QString>

#include <optional>

namespace quillon
{

class Files;

/// The ordinary file that a typed or pasted path means: the path as it stands or, when there is no such file, without
/// blanks and line breaks at its end, without quotation marks around it, and read as an address (file://).
std::optional<QString> fileMeantBy(const Files& files, const QString& typed);

} // namespace quillon
