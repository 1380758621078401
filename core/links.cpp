#include "core/links.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/link_list_window.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/listed_datum.h"
#include "core/mode.h"
#include "store/data_kinds.h"
#include "store/filter_result.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// The criteria of the link stored from one datum to another, not of the one back.
QString oneWay(const QString& source, const QString& target)
{
    return u"Object_ID ='"_s + target + u"' AND Link_Object_ID ='"_s + source + u"'"_s;
}

/// The criteria of the links between two data, in either direction.
QString between(const QString& a, const QString& b)
{
    return oneWay(a, b) + u" OR "_s + oneWay(b, a);
}

/// The criteria of the links in which a datum stands on either side.
QString touching(const QString& identifier)
{
    return u"Object_ID ='"_s + identifier + u"' OR Link_Object_ID ='"_s + identifier + u"'"_s;
}

/// Error 3021 when there is no datum of an identifier.
void requireRowOf(Session& session, const QString& identifier)
{
    const DataKind* const kind = kindOf(identifier);
    if (kind == nullptr || !required(session.*kind->recordSet).goTo(data_field::Object_ID, identifier))
        throw Error(errors::NoCurrentRecord);
}

void writeLink(RecordSet& links, const QString& source, const QString& target)
{
    links.addNew();
    links.setField(0, source);
    links.setField(1, target);
    links.update();
}

} // namespace

bool areLinked(Session& session, const QString& a, const QString& b)
{
    RecordSet& links = required(session.RsLink);
    links.findFirst(between(a, b));
    return links.hasCurrentRow();
}

void addLink(Session& session, const QString& source, const QString& target)
{
    RecordSet& links = required(session.RsLink);
    sqlite::Transaction write(links.database().connection());
    // Whoever gets the identifier of a datum that is not there would inherit the link.
    for (const QString& end : {source, target})
        requireRowOf(session, end);
    writeLink(links, source, target);
    write.commit();
}

bool LinkData(Session& session, const QString& source, const QString& target, qint16 mode)
{
    bool linked = false;
    guarded(session.reporting, u"LinkData"_s, [&] {
        const auto from = presentDatum(session, source);
        const auto to = from ? presentDatum(session, target) : std::nullopt;
        if (!from || !to)
            return;
        if (asks(mode)) {
            const Answer answer = session.dialogs.messageBox(
                {.text = u"<"_s + from->name + u"> と<"_s + to->name + u"> をリンクしますか。"_s,
                 .buttons = Buttons::OkCancel});
            if (answer != Answer::Ok)
                return;
        }
        const auto present = GetFilterResult(session.reporting, session.RsLink, between(source, target));
        if (required(present).recordCount() != 0) {
            session.dialogs.messageBox({.text = u"既に同一のリンクが存在します。"_s});
            return;
        }
        RecordSet& links = required(session.RsLink);
        sqlite::Transaction write(links.database().connection());
        for (const ListedDatum& end : {*from, *to}) {
            if (kindOf(end.identifier) == nullptr || !isStillThere(session, end))
                throw Error(errors::NoCurrentRecord); // gone, or another datum by now
        }
        writeLink(links, source, target);
        write.commit();
        linked = true;
        // sic: a blank after と that the question does not have.
        if (tells(mode))
            session.dialogs.messageBox(
                {.text = u"<"_s + from->name + u"> と <"_s + to->name + u"> をリンクしました。"_s});
    });
    return linked;
}

namespace
{

/// `require`: sees that the data are those that are meant, in the write that deletes their link.
template <class Require>
bool deleteLink(Session& session, const QString& a, const QString& b, Require&& require)
{
    bool done = false;
    guarded(session.reporting, u"DeleteLink"_s, [&] {
        const auto there = GetFilterResult(session.reporting, session.RsLink, oneWay(b, a));
        const qint64 countThere = required(there).recordCount();
        const auto back = GetFilterResult(session.reporting, session.RsLink, oneWay(a, b));
        if (countThere + required(back).recordCount() > 0) {
            sqlite::Transaction write(there->database().connection());
            require();
            for (RecordSet* links : {there.get(), back.get()}) {
                if (links->recordCount() > 0) {
                    links->moveFirst();
                    links->deleteRow();
                }
            }
            write.commit();
        }
        session.dialogs.messageBox({.text = u"<"_s + GetDataName(session, a) + u"> と <"_s +
                                            GetDataName(session, b) + u"> のリンクを削除しました。"_s});
        done = true;
    });
    return done;
}

} // namespace

bool DeleteLink(Session& session, const QString& a, const QString& b)
{
    return deleteLink(session, a, b, [] {});
}

bool DeleteLink(Session& session, const ListedDatum& a, const ListedDatum& b)
{
    return deleteLink(session, a.identifier, b.identifier, [&] {
        DataNameLookup names(session);
        for (const ListedDatum& datum : {a, b}) {
            if (names.name(datum.identifier) != datum.name)
                throw Error(errors::NoCurrentRecord);
        }
    });
}

void deleteLinksOf(Session& session, const QString& identifier)
{
    required(session.RsLink).filtered(touching(identifier))->deleteEveryRow();
}

void DeleteRelationalLink(Session& session, const QString& identifier)
{
    guarded(session.reporting, u"DeleteRelationalLink"_s, [&] {
        required(GetFilterResult(session.reporting, session.RsLink, touching(identifier))).deleteEveryRow();
    });
}

std::vector<LinkRow> linksOf(Session& session, const QString& identifier, DataNameLookup& names)
{
    const auto links = GetFilterResult(session.reporting, session.RsLink, touching(identifier));
    std::vector<LinkRow> rows;
    required(links).forEachRow({0, 1}, [&](const RecordSet::Row& link) {
        const QString partner = link.text(link.text(0) == identifier ? 1 : 0).toString();
        rows.push_back({.kind = shortKindName(partner), .name = names.name(partner), .identifier = partner});
    });
    return rows;
}

void SetLinkList(Session& session, DataWindow& window, const QString& identifier)
{
    guarded(session.reporting, u"SetLinkList"_s, [&] {
        window.setLinkRows({});
        DataNameLookup names(session);
        window.setLinkRows(linksOf(session, identifier, names));
        names.tellFailures();
    });
}

void SetAllLinkList(Session& session)
{
    const auto onFailure = [&](const Error& error) {
        if (error.number == errors::NoCurrentRecord)
            session.dialogs.messageBox(
                {.text = u"リンクは存在しません。"_s, .title = titles::LinkInformation});
        else
            ReportError(session.reporting, error, u"CloseAllForm"_s); // sic
    };
    guardedBy(onFailure, [&] {
        if (LinkListWindow* open = session.windows.loadedLinkList())
            open->reset();
        RecordSet& links = required(session.RsLink);
        links.moveFirst(); // fails when there are no links
        LinkListWindow& window = session.windows.linkList();
        qint64 count = 0;
        const auto rows = window.fillRows();
        DataNameLookup names(session, 2 * links.roughCount());
        links.forEachRow({0, 1}, [&](const RecordSet::Row& link) {
            const QStringView source = link.text(0);
            const QStringView target = link.text(1);
            const QString sourceName = names.name(source);
            const QString targetName = names.name(target);
            rows->append({sourceName, shortKindName(source), source},
                         {targetName, shortKindName(target), target});
            ++count;
        });
        rows->finish();
        window.setCount(u"現在の情報リンク総数 ：  "_s + QString::number(count));
        window.showModeless();
        names.tellFailures();
    });
}

} // namespace quillon
