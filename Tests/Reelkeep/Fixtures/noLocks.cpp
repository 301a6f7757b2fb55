// Preloaded, makes a file system without a lock service of every disk: flock fails with the errno value in
// REELKEEP_FLOCK_ERROR.

#include <cerrno>
#include <cstdlib>

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int flock(int, int)
{
    errno = std::atoi(std::getenv("REELKEEP_FLOCK_ERROR"));
    return -1;
}
