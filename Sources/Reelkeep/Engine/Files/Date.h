#pragma once

#include <chrono>

namespace reelkeep {

/// A wall-clock moment with the resolution of file times.
using Date = std::chrono::sys_time<std::chrono::nanoseconds>;

} // namespace reelkeep
