#include "app/base/platform/command_line.h"

#include <QFile>

namespace quillon::platform
{

QStringList arguments(int count, char** words)
{
    QStringList list;
    for (int i = 0; i < count; ++i)
        list << QFile::decodeName(words[i]);
    return list;
}

} // namespace quillon::platform
