#pragma once

#include <QString>

namespace quillon
{

/// The name of a table or of a field as it stands in a statement.
inline QString quoted(const QString& name)
{
    return u'"' + name + u'"';
}

} // namespace quillon
