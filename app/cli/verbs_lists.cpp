#include "app/base/reporting.h"
#include "app/cli/found.h"
#include "app/cli/item_writer.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"
#include "core/item_lists.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/row_pieces.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

/// The kinds that a command asks for: those named, or all.
std::vector<const DataKind*> kindsAskedFor(const Run& run)
{
    const QStringList words = run.arguments.values(u"--kind"_s);
    std::vector<const DataKind*> kinds;
    for (const DataKind& kind : data_kinds::all()) {
        if (words.isEmpty() || words.contains(wordOf(kind)))
            kinds.push_back(&kind);
    }
    return kinds;
}

std::optional<QStringView> textOrNull(const RowPieces& row, int field)
{
    return row.isNull(field) ? std::nullopt : std::optional(row.text(field));
}

/// Goes through the table of a kind, or the rows for which criteria hold, for whoever writes them.
RowPieces piecesFor(Run& run, const ItemWriter& writer, const DataKind& kind, const QString& criteria = {})
{
    const RecordSet& rows = required(run.session.*kind.recordSet);
    return writer.wantsTexts()
               ? RowPieces(rows, {data_field::Object_ID, data_field::Name, data_field::Explanation}, criteria)
               : RowPieces(rows, {data_field::Object_ID, data_field::Name}, criteria);
}

/// Writes the items of a kind, but those that are among some.
void writePieces(Run& run, ItemWriter& writer, const DataKind& kind, RowPieces& pieces,
                 const IdentifierSet* without = nullptr)
{
    const auto visit = [&](const RowPieces& row) {
        if (without == nullptr || !without->contains(row.text(0)))
            writer.write({.kind = kind,
                          .identifier = row.text(0),
                          .name = textOrNull(row, 1),
                          .text = writer.wantsTexts() ? textOrNull(row, 2) : std::nullopt});
        return !run.output.isFull();
    };
    while (pieces.next(visit) && writer.pause()) {
    }
}

/// Writes items one by one as they are found under their identifiers; those that are gone are passed over.
void writeItems(Run& run, ItemWriter& writer, const QStringList& identifiers)
{
    for (const QString& identifier : identifiers) {
        const DataKind* const kind = kindOf(identifier);
        if (kind == nullptr)
            continue;
        RecordSet& rows = required(run.session.*kind->recordSet);
        if (!rows.goTo(data_field::Object_ID, identifier))
            continue;
        const auto name = rows.fieldOrNull(data_field::Name);
        const auto text = writer.wantsTexts() ? rows.fieldOrNull(data_field::Explanation) : std::nullopt;
        writer.write({.kind = *kind, .identifier = identifier, .name = name, .text = text});
        if (!writer.pause())
            return;
    }
}

/// The members of the categories that a command names, each once.
QStringList membersAskedFor(Run& run)
{
    const auto kinds = kindsAskedFor(run);
    QStringList identifiers;
    IdentifierSet met;
    const auto collect = [&](const std::shared_ptr<RecordSet>& memberships) {
        required(memberships).forEachRow({1}, [&](const RecordSet::Row& row) {
            const QStringView identifier = row.text(0);
            if (met.contains(identifier) ||
                std::find(kinds.begin(), kinds.end(), kindOf(identifier)) == kinds.end())
                return;
            met.insert(identifier);
            identifiers << identifier.toString();
        });
    };
    for (const CategoryRow& category : foundCategories(run)) {
        collect(membersOf(run.session, category.identifier));
        if (run.arguments.has(u"--below"_s))
            collect(membersBelow(run.session, category.identifier));
    }
    return identifiers;
}

} // namespace

Status list(Run& run)
{
    const bool ofCategory = run.arguments.has(u"--category"_s);
    const bool uncategorised = run.arguments.has(u"--uncategorised"_s);
    if (ofCategory && uncategorised)
        throw WrongUsage{u"--category と --uncategorised は同時に指定できません。"_s, run.arguments.verb};
    if (!ofCategory && run.arguments.has(u"--below"_s))
        throw WrongUsage{u"--below は --category とともに指定します。"_s, run.arguments.verb};
    if (ofCategory) {
        const QStringList members = membersAskedFor(run);
        ItemWriter writer(run);
        writeItems(run, writer, members);
        return writer.finish();
    }
    std::optional<IdentifierSet> categorised;
    if (uncategorised)
        categorised = categorisedIdentifiers(run.session);
    ItemWriter writer(run);
    for (const DataKind* const kind : kindsAskedFor(run)) {
        RowPieces pieces = piecesFor(run, writer, *kind);
        writePieces(run, writer, *kind, pieces, categorised ? &*categorised : nullptr);
    }
    return writer.finish();
}

Status search(Run& run)
{
    const QString text = run.arguments.words.first();
    if (text.isEmpty())
        throw Refusal{Status::Refused, u"検索する文字列が入力されていません。"_s};
    ItemWriter writer(run);
    for (const DataKind* const kind : kindsAskedFor(run)) {
        // What the search window reports under this name is reported here, too.
        std::optional<RowPieces> pieces;
        guarded(run.session.reporting, u"GetFilterResult"_s,
                [&] { pieces.emplace(piecesFor(run, writer, *kind, searchCriteria(text))); });
        if (!pieces)
            return run.log.takeStatus(Status::Refused);
        writePieces(run, writer, *kind, *pieces);
        if (!writer.pause())
            break;
    }
    return writer.finish();
}

} // namespace quillon::cli
