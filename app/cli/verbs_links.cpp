#include "app/cli/columns.h"
#include "app/cli/found.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/links.h"
#include "core/listed_datum.h"
#include "store/data_kinds.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "store/row_pieces.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

constexpr qint16 Tells = 2;

} // namespace

Status link(Run& run)
{
    for (const QString& identifier : run.arguments.words)
        foundItem(run.session, identifier);
    const bool isLinked = LinkData(run.session, run.arguments.words[0], run.arguments.words[1], Tells);
    return isLinked ? Status::Done : run.log.takeStatus(Status::NothingFound);
}

Status unlink(Run& run)
{
    const QString& from = run.arguments.words[0];
    const QString& to = run.arguments.words[1];
    if (!areLinked(run.session, from, to))
        throw Refusal{Status::NothingFound, u"%1 と %2 はリンクされていません。"_s.arg(from, to)};
    const auto one = presentDatum(run.session, from);
    const auto other = one ? presentDatum(run.session, to) : std::nullopt;
    const bool isDone = one && other && DeleteLink(run.session, *one, *other);
    return isDone ? Status::Done : run.log.takeStatus(Status::Refused);
}

Status links(Run& run)
{
    Session& session = run.session;
    const std::optional<QString> of =
        run.arguments.words.isEmpty() ? std::nullopt : std::optional(run.arguments.words.first());
    if (of)
        foundItem(session, *of);
    const RecordSet& rows = required(session.RsLink);
    DataNameLookup names(session, of ? 0 : 2 * rows.roughCount());
    RowPieces pieces(rows, {0, 1});
    Output& output = run.output;
    qint64 count = 0;
    struct Link {
        QString from;
        QString to;
    };
    std::vector<Link> piece; // names are looked up when nothing is locked any more
    const auto visit = [&](const RowPieces& row) {
        constexpr std::size_t Most = 4'096;
        if (!of || row.text(0) == *of || row.text(1) == *of)
            piece.push_back({row.text(0).toString(), row.text(1).toString()});
        return piece.size() < Most;
    };
    for (bool hasMore = true; hasMore && output.goesOn();) {
        hasMore = pieces.next(visit);
        for (const Link& link : piece) {
            ++count;
            if (run.isJson()) {
                output.write("{\"from\":");
                output.writeJson(link.from);
                output.write(",\"to\":");
                output.writeJson(link.to);
                output.write("}\n");
            } else {
                constexpr int Columns = 14;
                const QString named = names.name(link.from) + u" → "_s + names.name(link.to);
                output.write(padded(onePrintedLine(link.from), Columns) +
                             padded(onePrintedLine(link.to), Columns) + onePrintedLine(named) + u'\n');
            }
        }
        piece.clear();
        output.flush();
        run.goOn();
    }
    names.tellFailures();
    if (count > 0)
        return run.log.takeStatus(Status::Done);
    complain(u"リンクは存在しません。"_s);
    return Status::NothingFound;
}

Status classify(Run& run)
{
    Session& session = run.session;
    const QString& identifier = run.arguments.words[0];
    foundItem(session, identifier);
    const CategoryRow category = foundCategory(session, run.arguments.words[1]);
    if (isFiled(session, category.identifier, identifier)) {
        complain(u"%1 は既にカテゴリ %2 に分類されています。"_s.arg(identifier, category.identifier));
        return Status::NothingFound;
    }
    const auto datum = presentDatum(session, identifier);
    if (!datum)
        return run.log.takeStatus(Status::Refused);
    const auto gone = ClassifyManyData(session, category, {*datum}, [] {});
    return run.log.takeStatus(gone.empty() ? Status::Done : Status::NothingFound);
}

Status unclassify(Run& run)
{
    Session& session = run.session;
    const QString& identifier = run.arguments.words[0];
    const QString& category = run.arguments.words[1];
    // Also out of a category, and of an item, that there is no more.
    if (!isFiled(session, category, identifier))
        throw Refusal{Status::NothingFound,
                      u"%1 はカテゴリ %2 に分類されていません。"_s.arg(identifier, category)};
    DeleteCategoryEntry(session, category, identifier);
    return run.log.takeStatus(Status::Done);
}

} // namespace quillon::cli
