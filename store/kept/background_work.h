#pragma once

#include <functional>

namespace quillon::kept
{

/// Does `work` in a thread that gets what the others leave, and waits for its end. What it throws is thrown here.
void inBackground(const std::function<void()>& work);

} // namespace quillon::kept
