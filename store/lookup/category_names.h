#pragma once

#include "store/lookup/name_lookup.h"

#include <QString>

namespace quillon
{

class Session;

/// The name of a category, "不明" when there is no such category.
QString GetCategoryName(Session& session, const QString& categoryIdentifier);

/// `GetCategoryName` for many identifiers.
class CategoryNameLookup
{
public:
    explicit CategoryNameLookup(Session& session);
    QString name(const QString& categoryIdentifier);

private:
    Session& m_session;
    NameLookup m_categories;
};

} // namespace quillon
