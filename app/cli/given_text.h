#pragma once

#include <QString>

#include <optional>

namespace quillon
{
struct DataKind;
}

namespace quillon::cli
{

struct Run;

/// The text that a command gives for the content of a datum: as a word, in a file, or on the standard input. Nothing when
/// it gives none.
std::optional<QString> givenText(Run& run, const DataKind& kind);

} // namespace quillon::cli
