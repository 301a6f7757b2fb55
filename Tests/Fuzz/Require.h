#pragma once

#include <cstdio>
#include <cstdlib>

namespace reelkeep {

/// Ends the program if a condition does not hold; the fuzzer then saves the input.
inline void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Does not hold: %s\n", what);
    std::abort();
}

} // namespace reelkeep
