#pragma once

#include "app/base/ports/data_window.h"
#include "core/datum_place.h"
#include "core/deferred_messages.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

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

/// A datum as a person last saw it.
struct SeenDatum {
    DatumPlace place;
    DatumTexts texts;
};

/// Whether name and content are filled and short enough for their kind; tells the user when they are not.
bool CheckDatum(Session& session, const DataKind& kind, const DatumTexts& texts);

/// What `CheckDatum` says first of texts that it refuses; nothing when they are all right.
QString refusalOf(const DataKind& kind, const DatumTexts& texts);

/// Adds the row of a datum, as a part of a larger write. Whether the texts may be refused is the caller's to ask.
/// Returns the number of the row. Not trapped: errors 3022, 3163.
qint64 addDatumRow(Session& session, const DataKind& kind, const QString& identifier,
                   const DatumTexts& texts);

/// The texts of a datum as its row holds them; nothing when the row is gone, another datum has its identifier, or
/// another database is open. Moves the cursor of the datum's table. Not trapped.
std::optional<DatumTexts> StoredTexts(Session& session, const DatumPlace& place);

/// What came of registering or updating a datum.
struct SavedDatum {
    DatumPlace place;
    DeferredMessages messages;      // what went wrong in filing, for the caller to show
    QStringList vanishedCategories; // those of the categories that are gone: the datum was not filed there
};

/// Adds a datum to the open database and files it in categories, as one durable write. When the identifier has been
/// taken meanwhile, the datum gets the next free one. Nothing when `CheckDatum` has refused the texts. Not trapped:
/// errors 5 without an identifier, 3163 for one that is too long, 3260.
std::optional<SavedDatum> RegisterDatum(Session& session, const DataKind& kind, const QString& identifier,
                                        const DatumTexts& texts, const std::vector<CategoryRow>& categories);

/// Writes other texts into the row of a datum and files it in categories, as one durable write. Nothing when
/// `CheckDatum` has refused the texts. Not trapped: error 3021 when the row is gone, another datum has its identifier,
/// or another database is open; 3197 when the row does not hold the texts seen any more.
std::optional<SavedDatum> UpdateDatum(Session& session, const SeenDatum& seen, const DatumTexts& texts,
                                      const std::vector<CategoryRow>& categories);

} // namespace quillon
