#include "store/filter_result.h"

#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

std::shared_ptr<RecordSet> GetFilterResult(Reporting& reporting, const std::shared_ptr<RecordSet>& recordSet,
                                           const QString& criteria)
{
    std::shared_ptr<RecordSet> result;
    guarded(reporting, u"GetFilterResult"_s, [&] { result = required(recordSet).filtered(criteria); });
    return result;
}

} // namespace quillon
