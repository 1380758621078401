#pragma once

#include "app/base/ports/data_window.h"

#include <vector>

namespace quillon
{

class ReportList;

/// Replaces the rows of a category list: name and identifier; a third column stays empty.
void showCategoryRows(ReportList& list, const std::vector<CategoryRow>& rows);

/// The rows of a category list.
std::vector<CategoryRow> shownCategoryRows(const ReportList& list);

} // namespace quillon
