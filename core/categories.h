#pragma once

#include <QString>

namespace quillon {

class DataWindow;
class Session;

/// The name of a category, "不明" when there is no such category.
QString GetCategoryName(Session& session, const QString& categoryIdentifier);

/// Fills a data window's category list with the categories of a datum. Failures are reported as "AddCategory".
void AddCategory(Session& session, DataWindow& window, const QString& identifier);

/// Files a datum in a category and takes it out of the category's ancestors. A datum already filed there is not
/// filed twice. Failures are reported as "ClassifyCategory".
void ClassifyCategory(Session& session, const QString& categoryIdentifier, const QString& identifier);

/// Takes a datum out of every ancestor of a category, outermost first. Failures are reported as
/// "DeleteParentCategory".
void DeleteParentCategory(Session& session, const QString& categoryIdentifier, const QString& identifier);

} // namespace quillon
