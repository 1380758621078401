#pragma once

#include <QDir>
#include <QString>

namespace quillon::platform
{

/// The text as the system's functions take it, as long as `text` lives.
inline const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

/// A path as the system's functions take it, however long it is.
inline QString nativePath(const QString& path)
{
    // A folder must leave room for the short name of a file in it.
    constexpr qsizetype Most = 247;
    QString native = QDir::toNativeSeparators(path);
    if (native.size() <= Most || !QDir::isAbsolutePath(path) || native.startsWith(QLatin1String("\\\\?\\")))
        return native;
    // The mark lets the system take everything as it stands: dots would be names.
    native = QDir::toNativeSeparators(QDir::cleanPath(path));
    return native.startsWith(QLatin1String("\\\\")) ? QLatin1String("\\\\?\\UNC") + native.sliced(1)
                                                    : QLatin1String("\\\\?\\") + native;
}

} // namespace quillon::platform
