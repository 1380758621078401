#include "app/cli/found.h"

#include "app/cli/run.h"
#include "core/category_entry.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/session.h"

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

const std::array<QString, data_kinds::Count>& words()
{
    static const std::array<QString, data_kinds::Count> all = {u"definition"_s, u"document"_s, u"file"_s};
    return all;
}

} // namespace

const DataKind& kindOfWord(const QString& word)
{
    for (const DataKind& kind : data_kinds::all()) {
        if (wordOf(kind) == word)
            return kind;
    }
    throw Error(errors::InvalidArgument);
}

QString wordOf(const DataKind& kind)
{
    return words()[data_kinds::positionOf(kind)];
}

DatumPlace foundItem(Session& session, const QString& identifier)
{
    const DataKind* const kind = kindOf(identifier);
    if (kind != nullptr) {
        RecordSet& rows = required(session.*kind->recordSet);
        if (rows.goTo(data_field::Object_ID, identifier))
            return {.kind = kind,
                    .databaseFile = openDatabaseFile(session),
                    .identifier = identifier,
                    .row = rows.rowNumber()};
    }
    throw Refusal{Status::NothingFound, u"データ %1 は見つかりませんでした。"_s.arg(identifier)};
}

CategoryRow foundCategory(Session& session, const QString& identifier)
{
    try {
        return presentCategory(session, identifier);
    } catch (const Error& error) {
        if (error.number != errors::NoCurrentRecord)
            throw;
        throw Refusal{Status::NothingFound, u"カテゴリ %1 は見つかりませんでした。"_s.arg(identifier)};
    }
}

std::vector<CategoryRow> foundCategories(Run& run)
{
    std::vector<CategoryRow> categories;
    for (const QString& identifier : run.arguments.values(u"--category"_s))
        categories.push_back(foundCategory(run.session, identifier));
    return categories;
}

} // namespace quillon::cli
