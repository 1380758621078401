#pragma once

#include <QString>

namespace quillon::platform
{

/// Puts a database at the head of the documents that the desktop offers as used last; those of other programs stay as
/// they are. Returns why that was not possible, in a sentence for the log; nothing when it was. It may wait for a slow
/// disk, so it is nothing for a thread that has windows.
QString noteRecentDocument(const QString& path);

} // namespace quillon::platform
