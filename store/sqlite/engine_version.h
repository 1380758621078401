#pragma once

#include <QString>

namespace quillon::sqlite
{

/// The version of the database engine that this process runs, as "3.40.1".
QString engineVersion();

} // namespace quillon::sqlite
