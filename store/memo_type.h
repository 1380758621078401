#pragma once

#include <QString>

namespace quillon
{

/// A data-definition statement with the type MEMO replaced by TEXT. Names and quoted texts stay as they are.
QString withTextForMemo(const QString& definition);

} // namespace quillon
