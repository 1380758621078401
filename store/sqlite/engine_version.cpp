#include "store/sqlite/engine_version.h"

#include <sqlite3.h>

namespace quillon::sqlite
{

QString engineVersion()
{
    return QString::fromLatin1(sqlite3_libversion());
}

} // namespace quillon::sqlite
