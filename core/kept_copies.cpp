#include "core/kept_copies.h"

#include "app/base/platform/files.h"
#include "app/base/ports/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/kept_place.h"
#include "store/kept/file_contents.h"
#include "store/kept/history_file.h"
#include "store/kept/history_writer.h"
#include "store/session.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

std::vector<KeptDatabase> ListKeptDatabases(Session& session)
{
    std::vector<KeptDatabase> databases;
    const auto folder = session.keeper != nullptr ? session.keeper->keptFolder() : std::nullopt;
    if (!folder)
        return databases;
    for (const QString& path : kept::databasesIn(*folder)) {
        const kept::Place place(*folder, path);
        KeptDatabase database{.path = path, .copied = {}, .changed = {}};
        const std::vector<kept::Copy> copies = kept::listCopies(place);
        if (!copies.empty())
            database.copied = copies.front().time;
        const QFileInfoList history = QDir(place.history()).entryInfoList(QDir::Files, QDir::Time);
        if (!history.isEmpty())
            database.changed = history.first().lastModified();
        databases.push_back(database);
    }
    const auto lastUse = [](const KeptDatabase& database) {
        const auto milliseconds = [](const QDateTime& time) {
            return time.isValid() ? time.toMSecsSinceEpoch() : 0;
        };
        return std::max(milliseconds(database.copied), milliseconds(database.changed));
    };
    std::stable_sort(databases.begin(), databases.end(),
                     [&](const KeptDatabase& a, const KeptDatabase& b) { return lastUse(a) > lastUse(b); });
    return databases;
}

std::vector<kept::Copy> ListCopies(Session& session, const QString& database)
{
    const std::optional<kept::Place> place = keptPlace(session, database);
    return place ? kept::listCopies(*place) : std::vector<kept::Copy>();
}

namespace
{

/// Writes the registered files of a copy into a folder, where nothing has their names.
TakenOutFiles takeOutFiles(Session& session, const kept::Copy& copy, const QString& folder)
{
    TakenOutFiles files;
    guarded(session.reporting, u"TakeOutFiles"_s, [&] {
        const std::optional<kept::Place> place = keptPlace(session, copy.database);
        if (!place)
            throw Error(errors::ObjectNotSet);
        const kept::FileContents contents(*place);
        for (const kept::CopiedFile& file : copy.files) {
            // What is written down could be anything by now.
            if (!platform::isBareName(file.name))
                continue;
            const QString target = folder + QDir::separator() + file.name;
            if (session.files.entryExists(target)) {
                const bool isSame = platform::sizeAndTime(target).size == file.size && !file.hash.isEmpty() &&
                                    kept::FileContents::hashOf(target) == file.hash;
                ++(isSame ? files.same : files.different);
                continue;
            }
            const std::optional<QString> content =
                file.hash.isEmpty() ? std::nullopt : contents.find(file.hash);
            if (!content) {
                ++files.lost;
                continue;
            }
            if (!session.files.folderExists(folder) && !QDir().mkpath(folder))
                throw Error(errors::PathFileAccess);
            const auto written = session.files.stageCopy(*content, folder, file.name, {});
            written->place({});
            written->keep();
            ++files.written;
        }
    });
    return files;
}

} // namespace

namespace
{

/// Sees that nothing stands beside a new database that would be played into it when it is opened: what a former one of
/// the same name has left behind. It stays, for it may be needed to mend that one.
void requireNothingBeside(Session& session, const QString& newFile)
{
    for (const QString& ending : {u"-journal"_s, u"-wal"_s}) {
        const QString left = newFile + ending;
        if (session.files.entryExists(left))
            throw Error(
                errors::PathFileAccess,
                u"同じ名前のデータベースの書き込みの記録「%1」が残っているため、取り出しませんでした。"
                u"取り出した控えが書き換えられてしまいます。別の名前を指定するか、"
                u"残っている記録を、元のデータベースと一緒に別の場所に移してください。"_s.arg(
                    QDir::toNativeSeparators(left)));
    }
}

} // namespace

namespace
{

/// A copy under the name of its database goes on with what is kept for it, and what happened since has not happened to it.
/// Under any other name it is a database of its own.
void noteWhatItIs(Session& session, const kept::Copy& copy, const QString& newFile)
{
    const std::optional<kept::Place> place = keptPlace(session, newFile);
    if (!place)
        return;
    if (place->database() != copy.database) {
        session.keeper->databaseCreated(newFile);
        return;
    }
    kept::HistoryFile history(*place, session.reporting);
    kept::writeSetBack(history, copy.time.toMSecsSinceEpoch());
}

} // namespace

std::optional<TakenOutFiles> TakeOutCopy(Session& session, const kept::Copy& copy, const QString& newFile)
{
    bool isTakenOut = false;
    const QFileInfo target(newFile);
    guarded(session.reporting, u"TakeOutCopy"_s, [&] {
        if (session.files.entryExists(newFile))
            throw Error(errors::DatabaseExists);
        requireNothingBeside(session, target.absoluteFilePath());
        if (!kept::isUnharmed(copy))
            throw Error(errors::NotADatabase,
                        u"控え「%1」は失われているか、壊れています。別の控えを指定してください。"_s.arg(
                            QDir::toNativeSeparators(copy.path)));
        const auto written = session.files.stageCopy(copy.path, target.absolutePath(), target.fileName(), {});
        written->place({});
        written->keep();
        isTakenOut = true;
        noteWhatItIs(session, copy, newFile);
    });
    if (!isTakenOut)
        return std::nullopt;
    return takeOutFiles(session, copy, target.absolutePath() + QDir::separator() + titles::FileFolder);
}

} // namespace quillon
