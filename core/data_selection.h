#pragma once

#include <QString>

#include <memory>

namespace quillon
{

class RecordSet;
class Session;

enum class SelectionUse { Show, Link };
enum class ListFill { Replace, Append };

/// Lists the data of a record set in the shared data selection window and shows it: modelessly for showing data;
/// modally, until the person has chosen or closed it, for linking one to the pending link source.
/// Showing ends a pending link. Always 0. Failures are reported as "CreateDataList".
/// `searched`: the text that a full-text search found the data by, if one did.
qint16 CreateDataList(Session& session, const std::shared_ptr<RecordSet>& recordSet, SelectionUse use,
                      ListFill fill, const QString& searched = {});

} // namespace quillon
