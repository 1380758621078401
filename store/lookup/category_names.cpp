#include "store/lookup/category_names.h"

#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "store/record_set.h"
#include "store/session.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

const QString GettingCategoryName = u"GetCategoryName"_s;

QString nameOfCategory(Session& session, const QString& categoryIdentifier)
{
    RecordSet& categories = required(session.RsCategoryID);
    const bool found = categories.goTo(category_field::Category_ID, categoryIdentifier);
    return found ? categories.field(category_field::Name) : titles::Unknown;
}

} // namespace

QString GetCategoryName(Session& session, const QString& categoryIdentifier)
{
    return readCategoryName(session, categoryIdentifier).value_or(QString());
}

std::optional<QString> readCategoryName(Session& session, const QString& categoryIdentifier)
{
    std::optional<QString> name;
    guarded(session.reporting, GettingCategoryName,
            [&] { name = nameOfCategory(session, categoryIdentifier); });
    return name;
}

CategoryNameLookup::CategoryNameLookup(Session& session)
    : m_session(session), m_categories(session.RsCategoryID, 1, 0)
{
}

QString CategoryNameLookup::name(const QString& categoryIdentifier)
{
    if (m_categories.canLookUp(categoryIdentifier))
        return m_categories.name(categoryIdentifier);
    QString name;
    guardedBy([this](const Error& failure) { m_failures.push_back(failure); },
              [&] { name = nameOfCategory(m_session, categoryIdentifier); });
    return name;
}

void CategoryNameLookup::tellFailures()
{
    for (const Error& failure : std::exchange(m_failures, {}))
        ReportError(m_session.reporting, failure, GettingCategoryName);
}

} // namespace quillon
