#pragma once

#include <cstddef>
#include <cstdlib>

namespace reelkeep {

inline bool isLongRun()
{
    return std::getenv("REELKEEP_LONG") != nullptr;
}

/// The number of rounds of a test that benefits from many: `many` if REELKEEP_LONG is set, else a few.
inline int rounds(int few, int many)
{
    return isLongRun() ? many : few;
}

/// The step with which a test goes through its cases: all of them if REELKEEP_LONG is set, else one of `step`, and
/// still fewer with a sanitizer, which makes each slower.
inline std::size_t stride(std::size_t step)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    step *= 3;
#endif
    return isLongRun() ? 1 : step;
}

} // namespace reelkeep
