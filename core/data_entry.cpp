#include "core/data_entry.h"

#include "app/base/input_checks.h"
#include "app/base/platform/code_page.h"
#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "store/data_kinds.h"
#include "store/identifiers.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/write_transaction.h"

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

/// Sets the fields of the row that is being added or changed. `identifier`: null leaves the row's own.
void setFields(const Session& session, RecordSet& rows, const DatumTexts& texts, const QString* identifier)
{
    const std::array<const QString*, 3> fields{&texts.name, identifier, &texts.content};
    for (int i = 0; i <= session.MainLastFieldIndex; ++i) {
        if (const QString* const field = fields.at(static_cast<std::size_t>(i)))
            rows.setField(i, *field);
    }
}

/// Keeps a new row from getting the number of a row that a window still shows. The open database remembers the numbers
/// it has met, but it may have been opened again since, and another program may have deleted the row.
void keepNumbersOfShownRows(Session& session, const DataKind& kind)
{
    const RecordSet& rows = tableOf(session, kind);
    for (LoadedWindow* const loaded : session.windows.loaded()) {
        const DataWindow* const window = loaded->asDataWindow();
        if (window != nullptr && window->windowName() == kind.windowName &&
            isOpenDatabase(session, window->row().databaseFile))
            rows.database().noteRow(rows.table().name, window->row().number);
    }
}

/// Files a datum in those of the categories that still exist; returns the identifiers of the others.
QStringList classify(Session& session, DeferredMessages& messages, const std::vector<CategoryRow>& categories,
                     const QString& identifier)
{
    QStringList vanished;
    for (const CategoryRow& category : categories) {
        if (isCategory(session, category))
            ClassifyDatum(session, messages, category.identifier, identifier);
        else
            vanished << category.identifier;
    }
    return vanished;
}

} // namespace

QString refusalOf(const DataKind& kind, const DatumTexts& texts)
{
    struct Field {
        const QString& text;
        double limit;
        QString label;
    };
    // sic: a document's content is called "定義" here, too.
    for (const Field& field : {Field{texts.name, kind.limits.name, u"名称"_s},
                               Field{texts.content, kind.limits.content, u"定義"_s}}) {
        for (const QString& refusal :
             {lengthRefusal(platform::byteLength932(field.text), field.limit, field.label),
              emptyRefusal(field.text)}) {
            if (!refusal.isEmpty())
                return refusal;
        }
    }
    return {};
}

bool CheckDatum(Session& session, const DataKind& kind, const DatumTexts& texts)
{
    const QString refusal = refusalOf(kind, texts);
    if (!refusal.isEmpty())
        session.dialogs.messageBox({.text = refusal, .title = titles::SystemAudit});
    return refusal.isEmpty();
}

qint64 addDatumRow(Session& session, const DataKind& kind, const QString& identifier, const DatumTexts& texts)
{
    RecordSet& rows = tableOf(session, kind);
    rows.addNew();
    setFields(session, rows, texts, &identifier);
    return rows.update();
}

std::optional<DatumTexts> StoredTexts(Session& session, const DatumPlace& place)
{
    if (!goToDatum(session, place))
        return std::nullopt;
    const RecordSet& rows = tableOf(session, *place.kind);
    return DatumTexts{.name = rows.field(data_field::Name), .content = rows.field(data_field::Explanation)};
}

std::optional<SavedDatum> RegisterDatum(Session& session, const DataKind& kind, const QString& identifier,
                                        const DatumTexts& texts, const std::vector<CategoryRow>& categories)
{
    if (!CheckDatum(session, kind, texts))
        return std::nullopt;
    requireIdentifier(identifier);
    RecordSet& rows = tableOf(session, kind);
    DeferredMessages messages(rows.database());
    DatumPlace place{
        .kind = &kind, .databaseFile = openDatabaseFile(session), .identifier = identifier, .row = 0};
    QStringList vanished;
    keepNumbersOfShownRows(session, kind);
    inWriteTransaction(rows.database(), [&] {
        // Another window or program may have registered something under it since it was shown.
        place.identifier = freeIdentifier(rows, identifier);
        place.row = addDatumRow(session, kind, place.identifier, texts);
        vanished = classify(session, messages, categories, place.identifier);
    });
    return SavedDatum{.place = std::move(place),
                      .messages = std::move(messages),
                      .vanishedCategories = std::move(vanished)};
}

std::optional<SavedDatum> UpdateDatum(Session& session, const SeenDatum& seen, const DatumTexts& texts,
                                      const std::vector<CategoryRow>& categories)
{
    if (!CheckDatum(session, *seen.place.kind, texts))
        return std::nullopt;
    const auto requireAsSeen = [&] {
        const auto stored = StoredTexts(session, seen.place);
        if (!stored)
            throw Error(errors::NoCurrentRecord);
        if (*stored != seen.texts)
            throw Error(errors::ChangedMeanwhile);
    };
    requireAsSeen(); // a datum that is gone or changed is reported as that, whoever may be writing
    RecordSet& rows = tableOf(session, *seen.place.kind);
    DeferredMessages messages(rows.database());
    QStringList vanished;
    inWriteTransaction(rows.database(), [&] {
        requireAsSeen();
        rows.edit();
        // The row was found by its identifier. Saving that again would write its index again, too.
        setFields(session, rows, texts, nullptr);
        rows.update();
        vanished = classify(session, messages, categories, seen.place.identifier);
    });
    return SavedDatum{
        .place = seen.place, .messages = std::move(messages), .vanishedCategories = std::move(vanished)};
}

} // namespace quillon
