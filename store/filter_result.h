#pragma once

#include "app/base/reporting.h"

#include <QString>

#include <memory>

namespace quillon
{

class RecordSet;

/// The rows of `recordSet` that match `criteria`, as a record set of their own; `recordSet` keeps its position.
/// Null when that failed; the failure has then been reported as "GetFilterResult".
std::shared_ptr<RecordSet> GetFilterResult(Reporting& reporting, const std::shared_ptr<RecordSet>& recordSet,
                                           const QString& criteria);

} // namespace quillon
