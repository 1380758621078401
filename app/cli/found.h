#pragma once

#include "app/base/ports/data_window.h"
#include "core/datum_place.h"

#include <QString>

#include <vector>

namespace quillon
{
class Session;
struct DataKind;
} // namespace quillon

namespace quillon::cli
{

struct Run;

// What the words of a command name. What there is not is a `Refusal` that says so.

/// The kind of a word such as "definition".
const DataKind& kindOfWord(const QString& word);
/// The word for a kind in commands and in JSON.
QString wordOf(const DataKind& kind);

/// The datum of an identifier. Moves the cursor of its table to it.
DatumPlace foundItem(Session& session, const QString& identifier);
CategoryRow foundCategory(Session& session, const QString& identifier);
/// The categories that --category names.
std::vector<CategoryRow> foundCategories(Run& run);

} // namespace quillon::cli
