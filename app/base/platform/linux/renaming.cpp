#include "app/base/platform/renaming.h"

#include "app/base/platform/any_names.h"

#include <QDir>

#include <cstdio>

namespace quillon::platform
{

bool renameFolder(const QString& from, const QString& to)
{
    return QDir().rename(from, to);
}

bool renameOver(const QString& from, const QString& to)
{
    return std::rename(bytesForSystem(from).constData(), bytesForSystem(to).constData()) == 0;
}

} // namespace quillon::platform
