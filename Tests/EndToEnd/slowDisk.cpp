// Preloaded into the program, makes every sync take as long as on a slow external disk, so that a copy of small clips
// can be watched. SLOW_DISK_MS: how long, in milliseconds. SLOW_DISK_HOLD: a file; while it exists, no sync ends.

#include <cstdlib>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

static void linger()
{
    const char* text = std::getenv("SLOW_DISK_MS");
    const long milliseconds = text ? std::atol(text) : 0;
    const timespec duration{milliseconds / 1000, milliseconds % 1000 * 1000000};
    nanosleep(&duration, nullptr);
    const char* hold = std::getenv("SLOW_DISK_HOLD");
    const timespec pause{0, 20'000'000};
    while (hold && access(hold, F_OK) == 0)
        nanosleep(&pause, nullptr);
}

extern "C" int fsync(int file)
{
    linger();
    return static_cast<int>(syscall(SYS_fsync, file));
}

extern "C" int fdatasync(int file)
{
    linger();
    return static_cast<int>(syscall(SYS_fdatasync, file));
}
