#include "core/categories.h"

#include "app/base/ports/data_window.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/name_lookup.h"
#include "store/filter_result.h"
#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

QString GetCategoryName(Session& session, const QString& categoryIdentifier)
{
    QString name;
    guarded(session.reporting, u"GetCategoryName"_s, [&] {
        RecordSet& categories = required(session.RsCategoryID);
        categories.findFirst(u"Category_ID ='"_s + categoryIdentifier + u"'"_s);
        const bool found = categories.hasCurrentRow() && categories.field(0) == categoryIdentifier;
        name = found ? categories.field(1) : titles::Unknown;
    });
    return name;
}

void AddCategory(Session& session, DataWindow& window, const QString& identifier)
{
    guarded(session.reporting, u"AddCategory"_s, [&] {
        window.setCategoryRows({});
        const auto memberships =
            GetFilterResult(session.reporting, session.RsCategory, u"Object_ID ='"_s + identifier + u"'"_s);
        CategoryNameLookup names(session);
        std::vector<CategoryRow> rows;
        required(memberships).forEachRow({0}, [&](const RecordSet::Row& membership) {
            const QString category = membership.text(0).toString();
            rows.push_back({.name = names.name(category), .identifier = category});
        });
        window.setCategoryRows(rows);
    });
}

void ClassifyCategory(Session& session, const QString& categoryIdentifier, const QString& identifier)
{
    guarded(session.reporting, u"ClassifyCategory"_s, [&] {
        const auto present = GetFilterResult(session.reporting, session.RsCategory,
                                             u"Category_ID ='"_s + categoryIdentifier +
                                                 u"' AND Object_ID = '"_s + identifier + u"'"_s);
        if (required(present).recordCount() == 0) {
            RecordSet& memberships = required(session.RsCategory);
            memberships.addNew();
            memberships.setField(0, categoryIdentifier);
            memberships.setField(1, identifier);
            memberships.update();
        }
        DeleteParentCategory(session, categoryIdentifier, identifier);
    });
}

void DeleteParentCategory(Session& session, const QString& categoryIdentifier, const QString& identifier)
{
    guarded(session.reporting, u"DeleteParentCategory"_s, [&] {
        for (auto hyphen = categoryIdentifier.indexOf(u'-'); hyphen >= 0;
             hyphen = categoryIdentifier.indexOf(u'-', hyphen + 1)) {
            const QString ancestor = categoryIdentifier.first(hyphen);
            const auto memberships = GetFilterResult(session.reporting, session.RsCategory,
                                                     u"Category_ID = '"_s + ancestor +
                                                         u"' AND Object_ID = '"_s + identifier + u"'"_s);
            if (required(memberships).recordCount() > 0) {
                memberships->moveFirst();
                memberships->deleteRow();
            }
        }
    });
}

} // namespace quillon
