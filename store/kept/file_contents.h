#pragma once

#include "store/kept/place.h"

#include <QByteArray>
#include <QSet>
#include <QString>

#include <optional>

namespace quillon::kept
{

/// How much is kept of the contents of registered files.
struct ContentLimits {
    qint64 file = qint64{100} * 1024 * 1024;     // larger ones are not kept
    qint64 all = qint64{2} * 1024 * 1024 * 1024; // with so much nothing is added

    /// For files that stay where they are: they leave room for such as are about to be overwritten, of which what is
    /// kept is all that will be left.
    static ContentLimits ofFilesThatStay();
};

/// Contents of registered files, each once, under its hash.
class FileContents
{
public:
    explicit FileContents(Place place, ContentLimits limits = {});

    /// Keeps what a file holds at the moment, on the disk when this returns; the blocks there are shared where the file
    /// system can do that. The hash; nothing when the file is too large, or cannot be read or kept. What is kept already
    /// takes no further room.
    std::optional<QByteArray> keep(const QString& path) const;
    /// The hash of what a file holds; nothing when it cannot be read.
    static std::optional<QByteArray> hashOf(const QString& path);
    /// The file of a content; nothing when it is not kept, or not what it was any more.
    std::optional<QString> find(const QByteArray& hash) const;
    /// Whether a content of this size is kept under a hash, as far as can be told without reading much.
    bool contains(const QByteArray& hash, qint64 size) const;
    /// Removes all but these, unless they have been kept within the last hour: then whoever refers to them may just be
    /// writing it down. `now`: milliseconds since 1970.
    void removeAllBut(const QSet<QByteArray>& hashes, qint64 now) const;

private:
    QString pathOf(const QByteArray& hash) const;
    void makeYoung(const QByteArray& hash) const;

    Place m_place;
    ContentLimits m_limits;
    mutable std::optional<qint64> m_size; // of all that is kept; asked for once
};

} // namespace quillon::kept
