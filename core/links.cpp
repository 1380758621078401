#include "core/links.h"

#include "app/base/ports/data_window.h"
#include "app/base/reporting.h"
#include "core/name_lookup.h"
#include "store/filter_result.h"
#include "store/identifiers.h"
#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void SetLinkList(Session& session, DataWindow& window, const QString& identifier)
{
    guarded(session.reporting, u"SetLinkList"_s, [&] {
        window.setLinkRows({});
        const auto links = GetFilterResult(session.reporting, session.RsLink,
                                           u"Object_ID ='"_s + identifier + u"' OR Link_Object_ID ='"_s +
                                               identifier + u"'"_s);
        DataNameLookup names(session);
        std::vector<LinkRow> rows;
        required(links).forEachRow({0, 1}, [&](const RecordSet::Row& link) {
            const QString partner = link.text(link.text(0) == identifier ? 1 : 0).toString();
            rows.push_back({.kind = GetDivName(session, partner, DivName::ShortName),
                            .name = names.name(partner),
                            .identifier = partner});
        });
        window.setLinkRows(rows);
    });
}

} // namespace quillon
