#pragma once

#include "app/base/ports/data_window.h"

#include <QHash>

#include <vector>

namespace quillon
{

class ReportList;

/// The rows of a window's category list: name and identifier; a third column stays empty. The numbers of the
/// categories' rows are kept beside the list.
class CategoryRows
{
public:
    /// Replaces the rows.
    void show(ReportList& list, const std::vector<CategoryRow>& rows);
    /// The rows as the list shows them.
    std::vector<CategoryRow> shown(const ReportList& list) const;

private:
    QHash<QString, qint64> m_numbers; // by identifier
};

} // namespace quillon
