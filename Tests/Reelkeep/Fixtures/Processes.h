#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace reelkeep {

/// Starts a program, found in PATH, that dies with this process. Its output is discarded, or goes to the descriptor
/// `output`.
pid_t start(const std::vector<std::string>& command, int output = -1);
/// Waits for its end; returns its status as given by `waitpid`.
int finish(pid_t process);
/// Runs a program to its end; returns whether it succeeded.
bool run(const std::vector<std::string>& command);

} // namespace reelkeep
