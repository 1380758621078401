#include "app/base/platform/any_names.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

// Here every name is text.

QString pathOfSystem(const QByteArray& bytes)
{
    return QString::fromUtf8(bytes);
}

QByteArray bytesForSystem(const QString& path)
{
    return path.toUtf8();
}

QString readableName(const QString& name)
{
    return name;
}

QString addressOfPath(const QString& path)
{
    return path;
}

QStringList filesWithUnreadableNames(const QString& /*folder*/)
{
    return {};
}

} // namespace quillon::platform
