#pragma once

#include <functional>
#include <string>

namespace reelkeep {

/// Runs `action` in a new process without special rights, as another user if this one has them. Returns its text, or
/// that of the exception it throws. It may run as the owner of the test's files: a mode that is to keep it out must
/// keep out the owner too.
std::string runUnprivileged(const std::function<std::string()>& action);

/// In such an action: from now on the system refuses to start threads.
void allowNoMoreThreads();

} // namespace reelkeep
