#pragma once

#include <QString>

namespace quillon
{

struct DataKind;
class Session;

/// Where a datum lies. Databases have identifiers in common, and one that a deletion has set free is given out again;
/// the number of a row is not.
struct DatumPlace {
    const DataKind* kind;
    QString databaseFile;
    QString identifier;
    qint64 row = 0;
};

/// The full name of the open database file, empty when none is open.
QString openDatabaseFile(const Session& session);

/// Whether a full name is one of the open database file.
bool isOpenDatabase(const Session& session, const QString& databaseFile);

/// Moves the cursor of the datum's table to its row. False when the row is gone, when another datum has its identifier,
/// or when another database is open. Not trapped.
bool goToDatum(Session& session, const DatumPlace& place);

/// The same, with error 3021 instead of false.
void requireDatum(Session& session, const DatumPlace& place);

} // namespace quillon
