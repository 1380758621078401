#pragma once

#include "store/kept/copies.h"

#include <QString>

#include <vector>

namespace quillon
{

class Session;

/// The kept copies of a database, newest first; also of one that is damaged or gone. Empty when nothing is kept.
std::vector<kept::Copy> ListCopies(Session& session, const QString& database);

/// Writes a kept copy as a new file. False when a failure was reported, as "TakeOutCopy": 3204 for a file that is there
/// already, 3343 for a copy that is not what it was any more.
bool TakeOutCopy(Session& session, const kept::Copy& copy, const QString& newFile);

} // namespace quillon
