#pragma once

#include "app/cli/status.h"

namespace quillon::cli
{

struct Run;

// What the verbs do, under the names of the table.
Status create(Run& run);
Status add(Run& run);
Status attach(Run& run);
Status list(Run& run);
Status show(Run& run);
Status search(Run& run);
Status set(Run& run);
Status deleteItems(Run& run);
Status link(Run& run);
Status unlink(Run& run);
Status links(Run& run);
Status categories(Run& run);
Status addCategory(Run& run);
Status renameCategory(Run& run);
Status deleteCategory(Run& run);
Status classify(Run& run);
Status unclassify(Run& run);
Status openFile(Run& run);
Status stats(Run& run);
Status check(Run& run);
Status history(Run& run);
Status restore(Run& run);
Status copies(Run& run);
Status exportData(Run& run);
Status importData(Run& run);
Status completion(Run& run);
Status help(Run& run);

} // namespace quillon::cli
