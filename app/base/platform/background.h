#pragma once

namespace quillon::platform
{

/// Gives this thread what processor and disk the others leave.
void workInBackground();

} // namespace quillon::platform
