#pragma once

#include <QString>

namespace quillon
{

/// What the program answers when it is asked for its version: a line of `program` and its version, then one each for
/// the commit it was built from, the toolkit and the database engine.
QString versionLines(const QString& program);

} // namespace quillon
