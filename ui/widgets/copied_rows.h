#pragma once

#include <QString>

#include <vector>

class QMimeData;

namespace quillon
{

class ReportModel;

/// A datum as a list has shown it when its row was copied.
struct CopiedRow {
    QString name;
    QString identifier;
};

/// Puts rows of a list on the clipboard: as lines with tabs for other programs, and as what they list for this one.
/// `rows`: in their order, from 0; `identifierColumn`: from 0, the name stands in the first one.
void copyRows(const ReportModel& list, const std::vector<int>& rows, int identifierColumn);

/// What `copyRows` has put on the clipboard, also in another run of the program; nothing when it holds anything else.
std::vector<CopiedRow> copiedRows();

} // namespace quillon
