#pragma once

#include <QString>

namespace quillon::cli
{

/// The completion for a shell ("bash", "zsh" or "fish"), made from the table of verbs.
QString completionFor(const QString& shell);

} // namespace quillon::cli
