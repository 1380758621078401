#pragma once

namespace quillon
{

class Session;

/// Asks every window that shows or registers a datum its closing question, and closes all of them when all have been
/// answered. False, and none is closed, as soon as one stays, because its question was cancelled or what it was to save
/// was refused; what others have saved by then is saved. Not trapped.
bool CloseDataWindows(Session& session);

/// Closes the windows that show rows of the open database, without a question: search results, all links, the category
/// chooser, the statistics. Not trapped.
void closeListsOfData(Session& session);

} // namespace quillon
