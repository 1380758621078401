#include "core/file_registration.h"

#include "app/base/error.h"
#include "app/base/extract_string.h"
#include "app/base/titles.h"
#include "core/category_entry.h"
#include "core/typed_path.h"
#include "store/identifiers.h"
#include "store/keeper.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

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
    if (required(session.RsRefFile).goTo(data_field::Object_ID, entry.identifier))
        throw Error(errors::DuplicateKey);
}

/// Runs `beforeCommit` when the rows have been accepted; its failure takes them back.
template <class Step>
void writeRows(Session& session, const FileEntry& entry, const QString& fileName, Step&& beforeCommit)
{
    RecordSet& files = required(session.RsRefFile);
    // Both rows or none: nothing names a file that could not be registered.
    sqlite::Transaction transaction(files.database().connection());
    files.addNew();
    files.setField(0, fileName);
    files.setField(1, entry.identifier);
    files.setField(2, u"未入力"_s);
    files.update();
    // A category that was deleted meanwhile does not come back.
    if (entry.category && isCategory(session, *entry.category)) {
        RecordSet& memberships = required(session.RsCategory);
        memberships.addNew();
        memberships.setField(0, entry.category->identifier);
        memberships.setField(1, entry.identifier);
        memberships.update();
    }
    std::forward<Step>(beforeCommit)();
    transaction.commit();
}

} // namespace

FileRegistration RegisterFile(Session& session, const FileEntry& entry, const Files::Progress& progress)
{
    const std::optional<QString> path = fileMeantBy(session.files, entry.path);
    if (!path)
        return FileRegistration::FileNotFound;
    const QString folder = session.inCurrentFolder(titles::FileFolder);
    if (!session.files.folderExists(folder))
        return FileRegistration::NoFolderForFiles;
    const QString name = ExtractString(session.reporting, *path, QDir::separator());
    checkRow(session, entry, name);
    if (progress && !progress(0, 0))
        return FileRegistration::Cancelled;
    const std::unique_ptr<StagedCopy> copy = session.files.stageCopy(*path, folder, name, progress);
    if (!copy)
        return FileRegistration::Cancelled;
    // A copy of a new name stays, whatever becomes of its row. One that replaces another datum's file waits until the
    // row has been accepted, and gives way to that file again when it cannot be made durable.
    const bool replaces = session.files.entryExists(folder + QDir::separator() + name);
    if (!replaces)
        copy->place();
    const QString target = folder + QDir::separator() + name;
    const auto former = replaces && session.keeper != nullptr ? session.keeper->fileGoes(target) : nullptr;
    writeRows(session, entry, name, [&] {
        if (replaces)
            copy->place();
    });
    copy->keep();
    if (former)
        former->isReplaced();
    return FileRegistration::Registered;
}

} // namespace quillon
