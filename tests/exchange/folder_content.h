#pragma once

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QString>

namespace quillon::testing
{

/// The files below a folder with what is in them, by their paths within it.
inline QMap<QString, QByteArray> contentBelow(const QString& folder)
{
    QMap<QString, QByteArray> content;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        QFile file(entries.next());
        content[QDir(folder).relativeFilePath(file.fileName())] =
            file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
    }
    return content;
}

/// Writes a file, with the folders on the way to it, in place of any other.
inline void writeContent(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly) ||
        file.write(content) != content.size())
        qFatal("cannot write a test file");
}

} // namespace quillon::testing
