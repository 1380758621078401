#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace quillon::platform
{

// A name of the file system need not be text: old archives leave names in other encodings behind. In a path such bytes
// stand as code units that no text holds, so that the path leads to the file again.

/// A path as the system has it, as a path in which every byte can be told.
QString pathOfSystem(const QByteArray& bytes);

/// The same back.
QByteArray bytesForSystem(const QString& path);

/// What a person can read of a name: as it stands when it is text, else in the encoding of old archives.
QString readableName(const QString& name);

/// A path that is no text as an address that is (file://), with such bytes percent-encoded.
QString addressOfPath(const QString& path);

/// The paths of the ordinary files in a folder whose names are no text.
QStringList filesWithUnreadableNames(const QString& folder);

} // namespace quillon::platform
