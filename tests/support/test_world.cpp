#include "tests/support/test_world.h"

#include "app/base/titles.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

TestWorld::TestWorld() : session({dialogs, eventLog, clock, desktop, files, windows}, folder.path())
{
    windows.list.push_back(&mainWindow);
    session.setMainWindow(&mainWindow);
    // No box may stand open in the middle of a pass over the file or of a write.
    dialogs.complainWhile([this] { return session.OpenDb && session.OpenDb->connection().holdsLock(); });
}

TestWorld::~TestWorld() = default;

// NOLINTNEXTLINE(readability-make-member-function-const): the world has a file more afterwards
QString TestWorld::createDatabase(const QString& name)
{
    QString path = folder.filePath(name);
    const auto database = Database::create(path);
    for (const TableSchema* table : schema::all())
        database->execute(table->statement);
    return path;
}

void TestWorld::keep()
{
    keeping = std::make_unique<kept::Keeping>(
        session.reporting, kept::KeepingOrder{.keptFolder = folder.filePath(u"kept"_s),
                                              .fileFolder = session.inCurrentFolder(titles::FileFolder)});
    session.keeper = keeping.get();
}

void TestWorld::openDatabase(const QString& path)
{
    session.OpenDb = Database::open(path);
    if (session.keeper != nullptr)
        session.keeper->databaseOpened(*session.OpenDb);
    session.RsMain = RecordSet::openTable(session.OpenDb, schema::Main());
    session.RsOpenApp = RecordSet::openTable(session.OpenDb, schema::OpenApp());
    session.RsRefFile = RecordSet::openTable(session.OpenDb, schema::RefFile());
    session.RsRefDoc = RecordSet::openTable(session.OpenDb, schema::RefDoc());
    session.RsLink = RecordSet::openTable(session.OpenDb, schema::Link());
    session.RsCategoryID = RecordSet::openTable(session.OpenDb, schema::Category_ID());
    session.RsCategory = RecordSet::openTable(session.OpenDb, schema::Category());
    session.MainLastFieldIndex = 2;
}

void TestWorld::addRow(const std::shared_ptr<RecordSet>& recordSet, const QStringList& fields)
{
    recordSet->addNew();
    for (int i = 0; i < fields.size(); ++i)
        recordSet->setField(i, fields[i]);
    recordSet->update();
}

QStringList TestWorld::rowsOf(const std::shared_ptr<RecordSet>& recordSet)
{
    QStringList rows;
    const bool three = recordSet->table().fields.size() == 3;
    const auto visit = [&](const RecordSet::Row& row) {
        QString line = row.text(0).toString() + u'|' + row.text(1).toString();
        if (three)
            line += u'|' + row.text(2).toString();
        rows << line;
    };
    if (three)
        recordSet->forEachRow({0, 1, 2}, visit);
    else
        recordSet->forEachRow({0, 1}, visit);
    return rows;
}

} // namespace quillon::testing
