#pragma once

#include "app/base/fixed_nodes.h"

#include <QString>

#include <memory>

namespace quillon
{

class FillProgress;
class RecordSet;
class ReportModel;
class Session;

/// Fills the data list of the main window. Each row: name, kind word, identifier, and in the column "下位分類"
/// whether the datum is filed below the selected category rather than in it.
/// Failures are reported as "CreateDataListMain"; the rows added before stay.
class DataListFiller
{
public:
    DataListFiller(Session& session, ReportModel& rows, FillProgress& progress);

    /// Lists what a fixed node stands for; nothing for none.
    void ShowFixedNode(FixedNode node);
    /// Lists the members of a category, then those of the categories below it.
    void ShowCategory(const QString& key);

    /// Lists every row of a data table in its order. `append`: adds to what is listed; otherwise the list is cleared.
    /// `mark`: the text of the fourth column, which stays untouched when it is empty.
    /// False when the table has no rows.
    bool CreateDataListMain(const std::shared_ptr<RecordSet>& table, bool append, const QString& mark);

    /// Adds the data that the rows of `recordSet` name in their field 1; the list is not cleared.
    void FillListFromRows(const std::shared_ptr<RecordSet>& recordSet, const QString& mark);

    /// Lists the data of one table that are in no category.
    void ShowUncategorisedList(const std::shared_ptr<RecordSet>& table);

private:
    Session& m_session;
    ReportModel& m_rows;
    FillProgress& m_progress;
};

} // namespace quillon
