#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace reelkeep {

/// Starts a program, found by PATH, that dies with this process. Its output goes nowhere, or to the open file `output`.
pid_t start(const std::vector<std::string>& command, int output = -1);
/// Waits for its end; its status as of `waitpid`.
int finish(pid_t process);
/// Runs a program to its end; whether it succeeded.
bool run(const std::vector<std::string>& command);

} // namespace reelkeep
