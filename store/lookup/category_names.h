#pragma once

#include "app/base/error.h"
#include "store/lookup/name_lookup.h"

#include <QString>

#include <optional>
#include <vector>

namespace quillon
{

class Session;

/// The name of a category, "不明" when there is no such category.
QString GetCategoryName(Session& session, const QString& categoryIdentifier);
/// The same; nothing after a failure, which has been reported as "GetCategoryName".
std::optional<QString> readCategoryName(Session& session, const QString& categoryIdentifier);

/// `GetCategoryName` for many identifiers, also in the middle of a pass over the file; failures are told afterwards.
class CategoryNameLookup
{
public:
    explicit CategoryNameLookup(Session& session);
    QString name(const QString& categoryIdentifier);
    /// Reports what has failed so far as `GetCategoryName` would have. To be called when the pass is over.
    void tellFailures();

private:
    Session& m_session;
    std::vector<Error> m_failures;
    NameLookup m_categories;
};

} // namespace quillon
