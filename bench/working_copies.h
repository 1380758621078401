#pragma once

#include <QString>

namespace quillon::bench
{

/// Two copies of the usual corpus that may be written, one for each side. They lie beside the corpora, where writing
/// takes as long as it does for a person's file, and are removed at the end.
struct WorkingCopies {
    QString programs;
    QString floors;
};

/// The copies; made when first asked for, and shared by all rows that write.
const WorkingCopies& workingCopies();

} // namespace quillon::bench
