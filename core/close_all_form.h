#pragma once

namespace quillon
{

class Session;

/// Unloads every window but the first one loaded, the main window. A window that refuses to close stays, and is
/// asked again in place of the next one. A failure is reported as "CloseAllForm" and ends the round.
void CloseAllForm(Session& session);

} // namespace quillon
