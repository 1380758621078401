#include "ui/data/category_rows.h"

#include "ui/widgets/report_list.h"

namespace quillon
{

void showCategoryRows(ReportList& list, const std::vector<CategoryRow>& rows)
{
    list.rows().clear();
    ReportModel::Fill fill(list.rows());
    for (const CategoryRow& row : rows)
        fill.append({row.name, row.identifier});
    fill.finish();
}

std::vector<CategoryRow> shownCategoryRows(const ReportList& list)
{
    const ReportModel& shown = list.rows();
    std::vector<CategoryRow> rows;
    for (int row = 0; row < shown.rowCount(); ++row)
        rows.push_back({.name = shown.text(row, 0).toString(), .identifier = shown.text(row, 1).toString()});
    return rows;
}

} // namespace quillon
