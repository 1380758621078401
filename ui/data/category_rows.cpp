#include "ui/data/category_rows.h"

#include "ui/widgets/report_list.h"

namespace quillon
{

void CategoryRows::show(ReportList& list, const std::vector<CategoryRow>& rows)
{
    list.rows().clear();
    m_numbers.clear();
    ReportModel::Fill fill(list.rows());
    for (const CategoryRow& row : rows) {
        fill.append({row.name, row.identifier});
        m_numbers.insert(row.identifier, row.number);
    }
    fill.finish();
}

std::vector<CategoryRow> CategoryRows::shown(const ReportList& list) const
{
    const ReportModel& shown = list.rows();
    std::vector<CategoryRow> rows;
    for (int row = 0; row < shown.rowCount(); ++row) {
        const QString identifier = shown.text(row, 1).toString();
        rows.push_back({.name = shown.text(row, 0).toString(),
                        .identifier = identifier,
                        .number = m_numbers.value(identifier)});
    }
    return rows;
}

} // namespace quillon
