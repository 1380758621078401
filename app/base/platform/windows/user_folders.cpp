#include "app/base/platform/user_folders.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

QString userDataFolder()
{
    const QString local = qEnvironmentVariable("LOCALAPPDATA");
    if (QDir::isAbsolutePath(local))
        return QDir::fromNativeSeparators(local) + u"/Quillon"_s;
    return QDir::homePath() + u"/AppData/Local/Quillon"_s;
}

} // namespace quillon::platform
