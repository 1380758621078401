#pragma once

#include <QString>

#include <functional>

namespace quillon
{

class Session;
struct CategoryRow;

/// The first free identifier for a new category: `beginning` (the parent's identifier and a hyphen, nothing at the top
/// level) and a letter from "A" upwards, or one of the codes that follow "Z". Error 6 when there is none.
QString newCategoryIdentifier(const QString& beginning, const std::function<bool(const QString&)>& isTaken);

/// Adds a category. Not trapped: errors 3022 for an identifier that is taken, 3163 for a name of more than 50
/// characters.
/// `parent`: the category that was asked about, nothing for one of the top level; error 3021 when it is gone.
void RegisterCategory(Session& session, const QString& categoryIdentifier, const QString& name,
                      const CategoryRow* parent = nullptr);

/// Adds a category under the first identifier of a `beginning` that neither the windows (`isShown`) nor the database
/// knows, and that is the answer. Otherwise like `RegisterCategory`; error 6 when there is none.
QString RegisterNewCategory(Session& session, const QString& beginning,
                            const std::function<bool(const QString&)>& isShown, const QString& name,
                            const CategoryRow* parent = nullptr);

/// Gives a category another name. Not trapped: errors 3021 when there is no such category, 3163 as above.
void RenameCategory(Session& session, const CategoryRow& category, const QString& name);

/// A category under its present name, as a question names it. Not trapped: error 3021 when there is none.
CategoryRow presentCategory(Session& session, const QString& categoryIdentifier);

/// Sees that a category is still the one that was asked about or shown. Error 3021 when it is gone or another has its identifier.
/// Moves the cursor to it.
void requireCategory(Session& session, const CategoryRow& asked);

/// A category as a window lists it: its name there, its identifier, and the number of its row, 0 when it has none.
CategoryRow listedCategory(Session& session, const QString& name, const QString& categoryIdentifier);

/// Whether a category of a window's list still exists; another one may have its identifier by now. Not trapped.
bool isCategory(Session& session, const CategoryRow& listed);

} // namespace quillon
