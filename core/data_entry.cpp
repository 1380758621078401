#include "core/data_entry.h"

#include "app/base/input_checks.h"
#include "core/categories.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/write_transaction.h"

#include <QFileInfo>

#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

RecordSet& tableOf(Session& session, const DataKind& kind)
{
    return required(session.*kind.recordSet);
}

/// Goes to the row of a datum; false when it is gone.
bool goToRow(Session& session, const DatumPlace& place)
{
    // A database that was opened later may hold another datum of the same identifier.
    const QString open = openDatabaseFile(session);
    if (place.databaseFile != open && QFileInfo(place.databaseFile) != QFileInfo(open))
        return false;
    return tableOf(session, *place.kind).goTo(data_field::Object_ID, place.identifier);
}

void requireRow(Session& session, const DatumPlace& place)
{
    if (!goToRow(session, place))
        throw Error(errors::NoCurrentRecord);
}

/// Sets the fields of the row that is being added or changed. `identifier`: null leaves the row's own.
void setFields(const Session& session, RecordSet& rows, const DatumTexts& texts, const QString* identifier)
{
    const std::array<const QString*, 3> fields{&texts.name, identifier, &texts.content};
    for (int i = 0; i <= session.MainLastFieldIndex; ++i) {
        if (const QString* const field = fields.at(static_cast<std::size_t>(i)))
            rows.setField(i, *field);
    }
}

void classify(Session& session, DeferredMessages& messages, const QStringList& categories,
              const QString& identifier)
{
    for (const QString& category : categories)
        ClassifyDatum(session, messages, category, identifier);
}

} // namespace

QString openDatabaseFile(const Session& session)
{
    return session.OpenDb ? session.OpenDb->path() : QString();
}

bool CheckDatum(Session& session, const DataKind& kind, const DatumTexts& texts)
{
    Reporting& reporting = session.reporting;
    // Both checks of a text run: it can only fail one of them, but neither may hide the other.
    const bool nameFits = MaxTextCheck(reporting, texts.name, kind.limits.name, u"名称"_s);
    const bool nameFilled = NullCheck(reporting, texts.name);
    if (!nameFits || !nameFilled)
        return false;
    // sic: a document's content is called "定義" here, too.
    const bool contentFits = MaxTextCheck(reporting, texts.content, kind.limits.content, u"定義"_s);
    const bool contentFilled = NullCheck(reporting, texts.content);
    return contentFits && contentFilled;
}

std::optional<DatumTexts> StoredTexts(Session& session, const DatumPlace& place)
{
    if (!goToRow(session, place))
        return std::nullopt;
    const RecordSet& rows = tableOf(session, *place.kind);
    return DatumTexts{.name = rows.field(data_field::Name), .content = rows.field(data_field::Explanation)};
}

std::optional<SavedDatum> RegisterDatum(Session& session, const DataKind& kind, const QString& identifier,
                                        const DatumTexts& texts, const QStringList& categories)
{
    if (!CheckDatum(session, kind, texts))
        return std::nullopt;
    RecordSet& rows = tableOf(session, kind);
    DeferredMessages messages(rows.database());
    inWriteTransaction(rows.database(), [&] {
        rows.addNew();
        setFields(session, rows, texts, &identifier);
        rows.update();
        classify(session, messages, categories, identifier);
    });
    return SavedDatum{
        .place = {.kind = &kind, .databaseFile = openDatabaseFile(session), .identifier = identifier},
        .messages = std::move(messages)};
}

std::optional<SavedDatum> UpdateDatum(Session& session, const DatumPlace& place, const DatumTexts& texts,
                                      const QStringList& categories)
{
    if (!CheckDatum(session, *place.kind, texts))
        return std::nullopt;
    requireRow(session, place); // a datum that is gone is reported as that, whoever may be writing
    RecordSet& rows = tableOf(session, *place.kind);
    DeferredMessages messages(rows.database());
    inWriteTransaction(rows.database(), [&] {
        requireRow(session, place);
        rows.edit();
        // The row was found by its identifier. Saving that again would write its index again, too.
        setFields(session, rows, texts, nullptr);
        rows.update();
        classify(session, messages, categories, place.identifier);
    });
    return SavedDatum{.place = place, .messages = std::move(messages)};
}

} // namespace quillon
