#pragma once

#include "app/base/ports/data_window.h"
#include "core/listed_datum.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace quillon
{

class DeferredMessages;
class Session;
struct DatumPlace;

/// Whether a datum is filed in this very category. Not trapped. Moves the cursor of the memberships.
bool isFiled(Session& session, const QString& categoryIdentifier, const QString& identifier);

/// The categories of a datum, each as a window lists it. Names that cannot be read are reported; all else is not trapped.
std::vector<CategoryRow> categoriesOf(Session& session, const QString& identifier);

/// Fills a data window's category list with the categories of a datum. Failures are reported as "AddCategory".
void AddCategory(Session& session, DataWindow& window, const QString& identifier);

/// Files a datum in a category and takes it out of the category's ancestors, as one write: both or neither. A datum
/// already filed there is not filed twice. Failures are reported as "ClassifyCategory".
void ClassifyCategory(Session& session, const QString& categoryIdentifier, const QString& identifier);

/// The same inside a durable write: what there is to report waits in `messages`.
void ClassifyDatum(Session& session, DeferredMessages& messages, const QString& categoryIdentifier,
                   const QString& identifier);

/// Files a datum that is filed nowhere yet, in these categories one after the other, as `ClassifyCategory` does. A part
/// of a larger write. In how many it is filed then. Not trapped.
qsizetype fileNewDatum(Session& session, const QString& identifier, const QStringList& categoryIdentifiers);

/// Files many data in a category that was asked about, each as ClassifyCategory does, as one durable write. Data that
/// are gone, or bear another name by now, are passed over. What there is to tell about single ones comes when all have
/// had their turn; a failure that undoes everything is not trapped, nor is error 3021 when the category is gone.
/// `advance` is called once for each datum. The places in `data` of those that are gone.
std::vector<std::size_t> ClassifyManyData(Session& session, const CategoryRow& category,
                                          const std::vector<ListedDatum>& data,
                                          const std::function<void()>& advance);

/// Takes a datum out of every ancestor of a category, outermost first. Failures are reported as
/// "DeleteParentCategory".
void DeleteParentCategory(Session& session, const QString& categoryIdentifier, const QString& identifier);

/// Takes a datum out of one category. Not trapped: error 3021 when it is not filed there.
void DeleteCategoryEntry(Session& session, const QString& categoryIdentifier, const QString& identifier);

/// The same for a category as a window lists it: error 3021, too, when it is gone or another has its identifier.
void DeleteCategoryEntry(Session& session, const CategoryRow& category, const QString& identifier);

/// Takes data out of a category, each out of the first of the category and its subcategories in which it is filed; a
/// datum that is named twice leaves two of them. One durable write. Data that are filed nowhere there any more, or bear
/// another name by now, are passed over and told afterwards.
/// `category`: as it was when its data were listed, with the number 0 when it had no row. Not trapped: error 3021
/// when that category is gone or another has its identifier.
void TakeOutOfCategory(Session& session, const CategoryRow& category, const std::vector<ListedDatum>& data);

/// Takes a datum out of every category. Failures are reported as "DeleteRelationalCategory".
void DeleteRelationalCategory(Session& session, const QString& identifier);
/// The same as a part of a larger write. Not trapped.
void deleteMembershipsOf(Session& session, const QString& identifier);

/// Whether there are categories below a category. Not trapped.
bool HasSubcategories(Session& session, const QString& categoryIdentifier);

/// Deletes a category with the memberships in it; its data stay, and so do its subcategories.
/// `mode`: 1 or 3 asks first, 2 or more tells afterwards, 0 is silent.
/// False when the user cancels or a failure was reported, as "DeleteCategory"; it is one when the category that was
/// asked about is another by then.
bool DeleteCategory(Session& session, const QString& categoryIdentifier, qint16 mode);

/// Lets the user choose one of the main window's categories and files a datum in it. Not trapped: error 35600 when
/// there are fewer than eight categories. That the category is gone, or is another by now, is reported as
/// "ClassifyCategory".
void SelectCategory(Session& session, const QString& identifier);

/// The same for the very datum that a window shows: error 3021, too, when it is gone after the choice.
void SelectCategory(Session& session, const DatumPlace& datum);

} // namespace quillon
