#pragma once

#include "app/base/ports/files.h"

#include <QString>

#include <memory>

namespace quillon::platform
{

/// Copies an ordinary file beside its place, `name` in `folder`, so that a file of that name is replaced as a whole or
/// not at all. The copy is on the disk when this returns, and its name when it has been placed.
/// Errors: 53 no such source, 76 no such folder, 70 no access, 61 full, 75 anything else.
std::unique_ptr<StagedCopy> stageCopy(const QString& source, const QString& folder, const QString& name,
                                      const Files::Progress& progress);

/// Tidies what programs that have ended abruptly left in `folder`: half copies go, and what had the name of a placed
/// copy gets it back or goes, as `judge` says. What a program is still at work with stays. Never fails.
void settleReplacements(const QString& folder, const Files::Judge& judge);

} // namespace quillon::platform
