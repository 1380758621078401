#include "store/kept/pruning.h"

#include "store/kept/copies.h"
#include "store/kept/file_contents.h"
#include "store/kept/history.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <optional>
#include <system_error>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

constexpr qint64 Day = qint64{24} * 60 * 60 * 1000;

qint64 lastWritten(const QFileInfo& info)
{
    return info.lastModified().toMSecsSinceEpoch();
}

void pruneHistory(const Place& place, qint64 now, const HistoryRules& rules)
{
    const QFileInfoList files = QDir(place.history()).entryInfoList({u"*.log"_s}, QDir::Files);
    std::vector<HistoryFileFacts> facts;
    for (const QFileInfo& info : files)
        facts.push_back({.lastWritten = lastWritten(info), .size = info.size()});
    for (const std::size_t i : historyToRemove(facts, now, rules))
        QFile::remove(files[static_cast<qsizetype>(i)].filePath());
}

/// What a killed program has left under a name for the time being.
void removeLeftOver(const QString& folder, qint64 now)
{
    for (const QFileInfo& info : QDir(folder).entryInfoList({u".new-*"_s}, QDir::Files | QDir::Hidden)) {
        if (now - lastWritten(info) > Day)
            QFile::remove(info.filePath());
    }
}

/// A killed program has said what a copy is that never got its name, or removed a copy and not yet what was said of it.
void removeListsWithoutCopies(const QString& folder, qint64 now)
{
    for (const QFileInfo& info : QDir(folder).entryInfoList({u"*.json"_s}, QDir::Files)) {
        const QString copy = info.path() + u'/' + info.completeBaseName() + u".mdb"_s;
        if (now - lastWritten(info) > Day && !QFile::exists(copy))
            QFile::remove(info.filePath());
    }
}

/// Whether all names in a folder can be read. There need not be one.
bool canBeListed(const QString& folder)
{
    std::error_code error;
    std::filesystem::directory_iterator entries(folder.toStdU16String(), error);
    while (!error && entries != std::filesystem::directory_iterator())
        entries.increment(error);
    return !error || error == std::errc::no_such_file_or_directory;
}

/// Nothing when not all of the history and of what is said of the copies can be read: nobody knows then what is named.
std::optional<QSet<QByteArray>> namedContents(const Place& place)
{
    if (!canBeListed(place.history()) || !canBeListed(place.copies()))
        return std::nullopt;
    std::optional<QSet<QByteArray>> named = contentsNamedByCopies(place);
    if (!named)
        return std::nullopt;
    History history(place);
    while (history.readOlder()) {
    }
    for (const Event& event : history.events()) {
        if (event.kind == EventKind::FileReplaced)
            named->insert(history.file(event).hash);
    }
    if (history.hasFailed())
        return std::nullopt;
    return named;
}

} // namespace

std::vector<std::size_t> historyToRemove(const std::vector<HistoryFileFacts>& files, qint64 now,
                                         const HistoryRules& rules)
{
    std::vector<std::size_t> oldestFirst(files.size());
    std::iota(oldestFirst.begin(), oldestFirst.end(), std::size_t{0});
    std::stable_sort(oldestFirst.begin(), oldestFirst.end(), [&](std::size_t a, std::size_t b) {
        return files[a].lastWritten < files[b].lastWritten;
    });
    qint64 size = std::accumulate(files.begin(), files.end(), qint64{0},
                                  [](qint64 sum, const HistoryFileFacts& file) { return sum + file.size; });
    std::vector<std::size_t> removed;
    for (const std::size_t i : oldestFirst) {
        const qint64 age = now - files[i].lastWritten;
        if (age <= rules.always || (age <= rules.longest && size <= rules.budget))
            break;
        removed.push_back(i);
        size -= files[i].size;
    }
    return removed;
}

void prune(const Place& place, qint64 now, const HistoryRules& rules)
{
    pruneHistory(place, now, rules);
    removeLeftOver(place.folder(), now);
    removeLeftOver(place.copies(), now);
    removeLeftOver(place.files(), now);
    removeListsWithoutCopies(place.copies(), now);
    if (QDir(place.files()).isEmpty())
        return;
    if (const auto named = namedContents(place))
        FileContents(place).removeAllBut(*named, now);
}

} // namespace quillon::kept
