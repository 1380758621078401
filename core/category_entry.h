#pragma once

#include <QString>

#include <functional>

namespace quillon
{

class Session;

/// The first free identifier for a new category: `beginning` (the parent's identifier and a hyphen, nothing at the top
/// level) and a letter from "A" upwards, or one of the codes that follow "Z". Error 6 when there is none.
QString newCategoryIdentifier(const QString& beginning, const std::function<bool(const QString&)>& isTaken);

/// Adds a category. Not trapped: errors 3022 for an identifier that is taken, 3163 for a name of more than 50
/// characters.
void RegisterCategory(Session& session, const QString& categoryIdentifier, const QString& name);

/// Gives a category another name. Not trapped: errors 3021 when there is no such category, 3163 as above.
void RenameCategory(Session& session, const QString& categoryIdentifier, const QString& name);

} // namespace quillon
