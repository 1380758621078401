#pragma once

#include "store/lookup/identifier_set.h"

#include <QString>

#include <memory>

namespace quillon
{

class RecordSet;
class Session;

/// The criteria of a search for a text in names and contents. The text is taken as it is: wildcards work as wildcards,
/// and a quote is a failure that says so.
QString searchCriteria(const QString& text);

/// The memberships in a category itself, and those in the categories below it. Null when that failed and was reported.
std::shared_ptr<RecordSet> membersOf(Session& session, const QString& categoryIdentifier);
std::shared_ptr<RecordSet> membersBelow(Session& session, const QString& categoryIdentifier);

/// The identifiers that are filed in any category: one pass over the memberships instead of one search per datum. Not
/// trapped.
IdentifierSet categorisedIdentifiers(Session& session);

} // namespace quillon
