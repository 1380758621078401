#pragma once

namespace quillon
{

class Session;

/// Unloads every window but the first one loaded, the main window. A window that refuses to close stays, and is
/// asked again in place of the next one. A failure is reported as "CloseAllForm" and ends the round.
void CloseAllForm(Session& session);

/// Asks every window that shows or registers a datum to close, each with its own question. True when all have gone;
/// false as soon as one stays, because its question was cancelled or what it was to save was refused. Not trapped.
bool CloseDataWindows(Session& session);

} // namespace quillon
