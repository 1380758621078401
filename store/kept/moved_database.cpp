#include "store/kept/moved_database.h"

#include "app/base/platform/file_identity.h"
#include "app/base/platform/renaming.h"
#include "store/kept/copies.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

constexpr int MostNames = 10'000; // of former databases of one name

/// Whether a database is what another was when it was copied last; that one is gone from its folder.
bool isAsCopiedLast(const QFileInfo& database, const Place& other)
{
    // A folder that is not there may come back with the disk on which it lies.
    const QFileInfo former(other.database());
    if (former.exists() || !former.dir().exists())
        return false;
    const std::vector<Copy> copies = listCopies(other);
    return !copies.empty() && copies.front().databaseModified != 0 &&
           copies.front().databaseModified == database.lastModified().toMSecsSinceEpoch() &&
           copies.front().databaseSize == database.size();
}

/// The place that a database has left; nothing when there is none, or when it could be more than one.
std::optional<Place> leftPlace(const QString& keptFolder, const Place& place)
{
    const std::optional<QByteArray> identity = platform::fileIdentity(place.database());
    const QFileInfo database(place.database());
    std::vector<Place> same;
    std::vector<Place> alike;
    for (const QString& path : databasesIn(keptFolder)) {
        const Place other(keptFolder, path);
        // With two names for one file either of them stays what it is.
        const bool hasLeft = platform::fileIdentity(path) != identity;
        if (identity && other.notedIdentity() == *identity && hasLeft)
            same.push_back(other);
        else if (isAsCopiedLast(database, other))
            alike.push_back(other);
    }
    if (same.size() == 1)
        return same.front();
    return same.empty() && alike.size() == 1 ? std::optional(alike.front()) : std::nullopt;
}

} // namespace

void findAgain(const QString& keptFolder, const Place& place)
{
    if (!QDir(place.folder()).exists()) {
        if (const std::optional<Place> left = leftPlace(keptFolder, place))
            platform::renameFolder(left->folder(), place.folder());
    }
    place.note();
}

void setAside(const QString& keptFolder, const Place& place)
{
    if (!QDir(place.folder()).exists())
        return;
    const QFileInfo database(place.database());
    const QString ending = database.suffix().isEmpty() ? QString() : u'.' + database.suffix();
    for (int n = 1; n <= MostNames; ++n) {
        const QString number = n == 1 ? QString() : u" %1"_s.arg(n);
        const Place aside(keptFolder, database.path() + u'/' + database.completeBaseName() +
                                          u"（以前のもの%1）"_s.arg(number) + ending);
        if (QFileInfo::exists(aside.database()) || QDir(aside.folder()).exists())
            continue;
        // By what the former one is known again goes with it.
        if (platform::renameFolder(place.folder(), aside.folder()))
            aside.note();
        return;
    }
}

} // namespace quillon::kept
