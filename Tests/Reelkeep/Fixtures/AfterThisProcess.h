#pragma once

#include <functional>

namespace reelkeep {

/// Starts a process that runs `action` once this process has ended, however it ends. False if it cannot be started.
bool afterThisProcess(const std::function<void()>& action);

} // namespace reelkeep
