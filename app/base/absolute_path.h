#pragma once

#include <QDir>
#include <QString>

namespace quillon
{

/// The full name of what `name` stands for in `folder`.
inline QString absolutePath(const QString& folder, const QString& name)
{
    // Qt takes a leading colon for the name of something inside the program.
    if (name.startsWith(u':'))
        return (folder.endsWith(u'/') ? folder : folder + u'/') + name;
    return QDir(folder).absoluteFilePath(name);
}

} // namespace quillon
