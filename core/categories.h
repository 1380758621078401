#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace quillon
{

class DataWindow;
class DeferredMessages;
class Session;

/// Fills a data window's category list with the categories of a datum. Failures are reported as "AddCategory".
void AddCategory(Session& session, DataWindow& window, const QString& identifier);

/// Files a datum in a category and takes it out of the category's ancestors. A datum already filed there is not
/// filed twice. Failures are reported as "ClassifyCategory".
void ClassifyCategory(Session& session, const QString& categoryIdentifier, const QString& identifier);

/// The same inside a durable write: what there is to report waits in `messages`.
void ClassifyDatum(Session& session, DeferredMessages& messages, const QString& categoryIdentifier,
                   const QString& identifier);

/// Files many data in a category, each as ClassifyCategory does, as one durable write. Failures of single ones are
/// reported when all have had their turn; a failure that undoes everything is not trapped.
/// `advance` is called once for each of `identifiers`.
void ClassifyManyData(Session& session, const QString& categoryIdentifier, const QStringList& identifiers,
                      const std::function<void()>& advance);

/// Takes a datum out of every ancestor of a category, outermost first. Failures are reported as
/// "DeleteParentCategory".
void DeleteParentCategory(Session& session, const QString& categoryIdentifier, const QString& identifier);

/// Takes a datum out of one category. Not trapped: error 3021 when it is not filed there.
void DeleteCategoryEntry(Session& session, const QString& categoryIdentifier, const QString& identifier);

/// Takes data out of a category, each out of the first of the category and its subcategories in which it is filed; a
/// datum that is named twice leaves two of them. One durable write. Not trapped.
/// How many of `identifiers`, from the first on, were taken out: the first that is not filed there ends it.
std::size_t TakeOutOfCategory(Session& session, const QString& categoryIdentifier,
                              const QStringList& identifiers);

/// Takes a datum out of every category. Failures are reported as "DeleteRelationalCategory".
void DeleteRelationalCategory(Session& session, const QString& identifier);
/// The same as a part of a larger write. Not trapped.
void deleteMembershipsOf(Session& session, const QString& identifier);

/// Deletes a category with the memberships in it; its data stay, and so do its subcategories.
/// `mode`: 1 or 3 asks first, 2 or more tells afterwards, 0 is silent.
/// False when the user cancels or a failure was reported, as "DeleteCategory".
bool DeleteCategory(Session& session, const QString& categoryIdentifier, qint16 mode);

/// Lets the user choose one of the main window's categories and files a datum in it. Not trapped: error 35600 when
/// there are fewer than eight categories.
void SelectCategory(Session& session, const QString& identifier);

} // namespace quillon
