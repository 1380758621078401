#include "store/lookup/category_names.h"

#include "app/base/reporting.h"
#include "app/base/titles.h"
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
        const bool found = categories.goTo(category_field::Category_ID, categoryIdentifier);
        name = found ? categories.field(category_field::Name) : titles::Unknown;
    });
    return name;
}

CategoryNameLookup::CategoryNameLookup(Session& session)
    : m_session(session), m_categories(session.RsCategoryID, 1, 0)
{
}

QString CategoryNameLookup::name(const QString& categoryIdentifier)
{
    return m_categories.canLookUp(categoryIdentifier) ? m_categories.name(categoryIdentifier)
                                                      : GetCategoryName(m_session, categoryIdentifier);
}

} // namespace quillon
