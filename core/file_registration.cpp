#include "core/file_registration.h"

#include "app/base/extract_string.h"
#include "app/base/titles.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

void writeRows(Session& session, const FileEntry& entry, const QString& fileName)
{
    RecordSet& files = required(session.RsRefFile);
    // Both rows or none: a failure leaves the copied file, but nothing that names it.
    sqlite::Transaction transaction(files.database().connection());
    files.addNew();
    files.setField(0, fileName);
    files.setField(1, entry.identifier);
    files.setField(2, u"未入力"_s);
    files.update();
    if (entry.category) {
        RecordSet& memberships = required(session.RsCategory);
        memberships.addNew();
        memberships.setField(0, *entry.category);
        memberships.setField(1, entry.identifier);
        memberships.update();
    }
    transaction.commit();
}

} // namespace

FileRegistration RegisterFile(Session& session, const FileEntry& entry, const Files::Progress& progress)
{
    if (!session.files.fileExists(entry.path) || entry.path.endsWith(QDir::separator()))
        return FileRegistration::FileNotFound;
    const QString folder = session.inCurrentFolder(titles::FileFolder);
    if (!session.files.folderExists(folder))
        return FileRegistration::NoFolderForFiles;
    const QString name = ExtractString(session.reporting, entry.path, QDir::separator());
    if (progress)
        progress(0, 0);
    session.files.copyInto(entry.path, folder, name, progress);
    writeRows(session, entry, name);
    return FileRegistration::Registered;
}

} // namespace quillon
