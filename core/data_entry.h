#pragma once

#include "core/deferred_messages.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace quillon
{

struct DataKind;
class Session;

/// What a person writes of a datum.
struct DatumTexts {
    QString name;
    QString content; // the definition, or the text of a document

    bool operator==(const DatumTexts&) const = default;
};

/// Where a datum lies: databases have identifiers in common.
struct DatumPlace {
    const DataKind* kind;
    QString databaseFile;
    QString identifier;
};

/// The full name of the open database file, empty when none is open.
QString openDatabaseFile(const Session& session);

/// Whether name and content are filled and short enough for their kind; tells the user when they are not.
bool CheckDatum(Session& session, const DataKind& kind, const DatumTexts& texts);

/// The texts of a datum as its row holds them; nothing when the row is gone or another database is open. Moves the
/// cursor of the datum's table. Not trapped.
std::optional<DatumTexts> StoredTexts(Session& session, const DatumPlace& place);

/// What came of registering or updating a datum.
struct SavedDatum {
    DatumPlace place;
    DeferredMessages messages; // what went wrong in filing, for the caller to show
};

/// Adds a datum to the open database and files it in categories, as one durable write. Nothing when `CheckDatum` has
/// refused the texts. Not trapped: errors 3022 for an identifier that is taken, 3163 for one that is too long, 3260.
std::optional<SavedDatum> RegisterDatum(Session& session, const DataKind& kind, const QString& identifier,
                                        const DatumTexts& texts, const QStringList& categories);

/// Writes other texts into the row of a datum and files it in categories, as one durable write. Nothing when
/// `CheckDatum` has refused the texts. Not trapped: error 3021 when the row is gone or another database is open.
std::optional<SavedDatum> UpdateDatum(Session& session, const DatumPlace& place, const DatumTexts& texts,
                                      const QStringList& categories);

} // namespace quillon
