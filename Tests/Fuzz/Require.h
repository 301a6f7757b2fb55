#pragma once

#include <cstdio>
#include <cstdlib>

namespace reelkeep {

/// Ends the program, which keeps the input at hand, where something does not hold.
inline void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Does not hold: %s\n", what);
    std::abort();
}

} // namespace reelkeep
