// Preloaded, makes every disk a file system without locks: flock fails with the errno value in
// REELKEEP_FLOCK_ERROR.

#include <cerrno>
#include <cstdlib>

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int flock(int, int)
{
    errno = std::atoi(std::getenv("REELKEEP_FLOCK_ERROR"));
    return -1;
}
