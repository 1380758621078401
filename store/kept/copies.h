#pragma once

#include "app/base/platform/files.h"
#include "store/kept/place.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace quillon::kept
{

/// A registered file as a copy knows it.
struct CopiedFile {
    QString name;
    qint64 size = 0;
    qint64 modified = 0;    // milliseconds since 1970
    QByteArray hash;        // of its content among the kept ones; empty: not kept
    bool isMissing = false; // it was not there; the content is the last one that was
};

/// A kept copy of a database.
struct Copy {
    QString path;
    QString database; // of which it is one
    QDateTime time;   // local
    qint64 size = 0;
    qint64 rows = 0;               // of all tables
    QHash<QString, qint64> counts; // by table
    bool isDoubtful = false;       // it lacks more than half of what the newest good one before holds
    QByteArray sum;                // over its file: whether it is what it was
    qint64 databaseSize = 0;       // of the database when it was begun, and when that had been written last
    qint64 databaseModified = 0;
    std::vector<CopiedFile> files;
};

/// The copies of a place, newest first.
std::vector<Copy> listCopies(const Place& place);

/// Which contents of registered files the copies of a place name; nothing when what one of them names cannot be read.
std::optional<QSet<QByteArray>> contentsNamedByCopies(const Place& place);

/// How a database is looked at when it is copied: what is looked at is the copy, so that nobody has to wait.
enum class Inspection {
    WhenChanged, // quickly, and not at all when the database is as it was for the last copy
    Quick,       // in any case
    Thorough     // in any case, and every index is compared with its table
};

/// What a copy is made of.
struct CopyOrder {
    Place place;
    QString fileFolder;               // of the registered files
    std::function<QDateTime()> now;   // local
    std::function<bool()> goesOn;     // asked all the time; false: to be ended, and nothing is left
    int mostBeginnings = 50;          // every write of others makes it begin anew; so often it may
    std::function<void()> pause = {}; // now and then between two steps
    Inspection inspection = Inspection::WhenChanged;
    bool onlyLooks = false; // the copy is for looking at the database, and is gone with that; nothing is kept
    std::function<bool(const QString& path)> isAtHand = platform::isAtHand; // others are not read
};

enum class CopyOutcome { Made, Unchanged, Looked, Stopped };

/// Makes a copy of the database of a place, checks it and puts it among the others, of which some may go for it. None
/// is made when the database is as it was for the last one. Errors: what stands in the way, and 3343 when the database is
/// damaged, and so the copy; then nothing has changed.
CopyOutcome makeCopy(const CopyOrder& order);

/// Whether a copy is still what it was when it was made.
bool isUnharmed(const Copy& copy);

} // namespace quillon::kept
