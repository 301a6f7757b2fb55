#pragma once

#include <cstdlib>

namespace reelkeep {

/// The number of rounds of a test that benefits from many: `many` if REELKEEP_LONG is set, else a few.
inline int rounds(int few, int many)
{
    return std::getenv("REELKEEP_LONG") != nullptr ? many : few;
}

} // namespace reelkeep
