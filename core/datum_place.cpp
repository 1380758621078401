#include "core/datum_place.h"

#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/session.h"

#include <QFileInfo>

namespace quillon
{

QString openDatabaseFile(const Session& session)
{
    return session.OpenDb ? session.OpenDb->path() : QString();
}

bool isOpenDatabase(const Session& session, const QString& databaseFile)
{
    const QString open = openDatabaseFile(session);
    return databaseFile == open || QFileInfo(databaseFile) == QFileInfo(open);
}

bool goToDatum(Session& session, const DatumPlace& place)
{
    if (!isOpenDatabase(session, place.databaseFile))
        return false;
    RecordSet& rows = required(session.*place.kind->recordSet);
    return rows.goTo(data_field::Object_ID, place.identifier) && rows.rowNumber() == place.row;
}

void requireDatum(Session& session, const DatumPlace& place)
{
    if (!goToDatum(session, place))
        throw Error(errors::NoCurrentRecord);
}

} // namespace quillon
