#include "store/build_info.h"

#include "app/base/titles.h"
#include "store/sqlite/engine_version.h"

#include <build_commit.h> // made by the build, and so in no folder of the sources

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

QString versionLines(const QString& program)
{
    const QString commit = QString::fromUtf16(BuildCommit.data(), static_cast<qsizetype>(BuildCommit.size()));
    return program + u' ' + titles::Version + u"\nコミット: "_s + (commit.isEmpty() ? u"不明"_s : commit) +
           u"\nQt: "_s + QLatin1StringView(qVersion()) + u"\nSQLite: "_s + sqlite::engineVersion() + u'\n';
}

} // namespace quillon
