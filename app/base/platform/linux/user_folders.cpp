#include "app/base/platform/user_folders.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

QString userDataFolder()
{
    const QString home = qEnvironmentVariable("XDG_DATA_HOME");
    // A relative value is to be ignored.
    if (QDir::isAbsolutePath(home))
        return home + u"/quillon"_s;
    return QDir::homePath() + u"/.local/share/quillon"_s;
}

} // namespace quillon::platform
