#pragma once

#include <cstddef>
#include <functional>

namespace reelkeep {

/// Calls `work` for each index below `count`, each on a thread of its own, and returns when all have ended. Work for
/// which the system has no thread left is done by the calling thread. Throws the exception of the first index that has
/// one.
void inParallel(std::size_t count, const std::function<void(std::size_t index)>& work);

} // namespace reelkeep
