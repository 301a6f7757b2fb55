#pragma once

#include <functional>
#include <string>

namespace reelkeep {

/// Runs `action` in a process of its own, as a user without special rights where this one has them, and returns its
/// text; the text of the exception where it throws one.
std::string runUnprivileged(const std::function<std::string()>& action);

/// Within such an action: from now on the system refuses to start another thread.
void allowNoMoreThreads();

} // namespace reelkeep
