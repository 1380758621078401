#include "core/file_registration.h"

#include "app/base/error.h"
#include "app/base/extract_string.h"
#include "app/base/platform/any_names.h"
#include "app/base/platform/files.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/category_entry.h"
#include "core/links.h"
#include "core/typed_path.h"
#include "store/identifiers.h"
#include "store/keeper.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

#include <QCryptographicHash>
#include <QDir>

#include <memory>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Refuses what could not be written whatever the copying came to.
void checkRow(Session& session, const FileEntry& entry, const QString& fileName)
{
    const auto widthOf = [](int field) {
        return schema::RefFile().fields[static_cast<std::size_t>(field)].width;
    };
    const int nameWidth = widthOf(data_field::Name);
    if (fileName.size() > nameWidth)
        throw Error(
            errors::FieldTooSmall,
            u"ファイル名「%1」は長すぎます（%2 文字）。%3 文字以内の名前に変えてから登録してください。"_s.arg(
                fileName, QString::number(fileName.size()), QString::number(nameWidth)));
    requireIdentifier(entry.identifier);
    if (entry.identifier.size() > widthOf(data_field::Object_ID))
        throw Error(errors::FieldTooSmall);
    required(session.RsRefFile);
}

/// The beginning of the marks of a database.
QString markOf(Session& session)
{
    const QByteArray path = required(session.RsRefFile).database().connection().file().toUtf8();
    constexpr qsizetype Digits = 8;
    return QString::fromLatin1(
               QCryptographicHash::hash(path, QCryptographicHash::Sha256).toHex().first(Digits)) +
           u'-';
}

/// What tells for whom a file is replaced.
QString markOf(Session& session, const QString& identifier)
{
    return markOf(session) + QString::fromLatin1(identifier.toUtf8().toPercentEncoding());
}

/// Settles what an abrupt end has left: the row decides whether a file that was replaced gets its place back.
void settle(Session& session, const QString& folder)
{
    const QString ours = markOf(session);
    RecordSet& rows = required(session.RsRefFile);
    session.files.settleReplacements(folder, [&](const QString& mark, const QString& name) {
        // Put there by no registration: it was done when it was placed.
        if (mark.isEmpty())
            return Files::Replacement::Done;
        if (!mark.startsWith(ours))
            return Files::Replacement::NotKnown;
        const QString identifier =
            QString::fromUtf8(QByteArray::fromPercentEncoding(mark.sliced(ours.size()).toLatin1()));
        const bool registered = rows.goTo(data_field::Object_ID, identifier) &&
                                platform::nameKey(rows.field(data_field::Name)) == platform::nameKey(name);
        return registered ? Files::Replacement::Done : Files::Replacement::BrokenOff;
    });
}

/// Links the file with the datum that it is registered for. A datum that is gone, a link that an earlier file of the same
/// identifier has left, or a missing table keeps no file from being registered; a disk that fails does.
void linkIfWanted(Session& session, const QString& identifier)
{
    if (!session.RegisteringToLink)
        return;
    const auto noteOrThrow = [&](const Error& error) {
        const bool isOfTheLinkAlone = error.number == errors::NoCurrentRecord ||
                                      error.number == errors::DuplicateKey ||
                                      error.number == errors::ObjectNotSet;
        if (!isOfTheLinkAlone)
            throw error;
        session.RegisteringToLink->failure = error;
    };
    guardedBy(noteOrThrow, [&] {
        if (session.RegisteringToLink->requireIt)
            session.RegisteringToLink->requireIt();
        addLink(session, session.RegisteringToLink->with, identifier);
    });
}

/// Runs `beforeCommit` when the rows have been accepted; its failure takes them back. The identifier of the file.
template <class Step>
QString writeRows(Session& session, const FileEntry& entry, const QString& fileName, Step&& beforeCommit)
{
    RecordSet& files = required(session.RsRefFile);
    // All rows or none: nothing names a file that could not be registered.
    sqlite::Transaction transaction(files.database().connection());
    // Another window or program may have registered something under it since it was shown.
    QString identifier = freeIdentifier(files, entry.identifier);
    files.addNew();
    files.setField(0, fileName);
    files.setField(1, identifier);
    files.setField(2, u"未入力"_s);
    files.update();
    // A category that was deleted meanwhile does not come back.
    if (entry.category && isCategory(session, *entry.category)) {
        RecordSet& memberships = required(session.RsCategory);
        memberships.addNew();
        memberships.setField(0, entry.category->identifier);
        memberships.setField(1, identifier);
        memberships.update();
    }
    linkIfWanted(session, identifier);
    std::forward<Step>(beforeCommit)(identifier);
    transaction.commit();
    if (session.RegisteringToLink)
        session.RegisteringToLink->registered = identifier;
    return identifier;
}

} // namespace

FileRegistration RegisterFile(Session& session, const FileEntry& entry, const Files::Progress& progress,
                              QString* registeredAs)
{
    const std::optional<QString> path = fileMeantBy(session.files, entry.path);
    if (!path)
        return FileRegistration::FileNotFound;
    const QString folder = session.inCurrentFolder(titles::FileFolder);
    if (!session.files.folderExists(folder))
        return FileRegistration::NoFolderForFiles;
    const QString name = platform::readableName(
        ExtractString(session.reporting, QDir::toNativeSeparators(*path), QDir::separator()));
    checkRow(session, entry, name);
    settle(session, folder);
    if (progress && !progress(0, 0))
        return FileRegistration::Cancelled;
    const std::unique_ptr<StagedCopy> copy = session.files.stageCopy(*path, folder, name, progress);
    if (!copy)
        return FileRegistration::Cancelled;
    // A copy of a new name stays, whatever becomes of its row. One that replaces another datum's file waits until the
    // row has been accepted, and gives way to that file again when it cannot be made durable.
    const bool replaces = session.files.entryExists(folder + QDir::separator() + name);
    if (!replaces)
        copy->place({});
    const QString target = folder + QDir::separator() + name;
    const auto former = replaces && session.keeper != nullptr ? session.keeper->fileGoes(target) : nullptr;
    QString identifier;
    try {
        identifier = writeRows(session, entry, name, [&](const QString& given) {
            if (replaces)
                copy->place(markOf(session, given));
        });
    } catch (...) {
        // A disk can fail at the very end of a write that stands all the same. So what the file holds is asked, and where
        // it cannot be asked now, the next registration does.
        copy->leave();
        guardedBy([](const Error&) {}, [&] { settle(session, folder); });
        if (former)
            former->isReplaced(); // unless it is there as ever
        throw;
    }
    copy->keep();
    if (registeredAs != nullptr)
        *registeredAs = identifier;
    if (former)
        former->isReplaced();
    return FileRegistration::Registered;
}

} // namespace quillon
