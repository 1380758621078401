#include "core/item_lists.h"

#include "store/filter_result.h"
#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

QString searchCriteria(const QString& text)
{
    return u"Name Like '*"_s + text + u"*' OR Explanation Like '*"_s + text + u"*'"_s;
}

std::shared_ptr<RecordSet> membersOf(Session& session, const QString& categoryIdentifier)
{
    return GetFilterResult(session.reporting, session.RsCategory,
                           u"Category_ID = '"_s + categoryIdentifier + u"'"_s);
}

std::shared_ptr<RecordSet> membersBelow(Session& session, const QString& categoryIdentifier)
{
    return GetFilterResult(session.reporting, session.RsCategory,
                           u"Category_ID Like '"_s + categoryIdentifier + u"-*'"_s);
}

IdentifierSet categorisedIdentifiers(Session& session)
{
    IdentifierSet categorised;
    required(session.RsCategory).forEachRow({1}, [&](const RecordSet::Row& row) {
        // No null is equal to any identifier.
        if (!row.isNull(0))
            categorised.insert(row.text(0));
    });
    return categorised;
}

} // namespace quillon
