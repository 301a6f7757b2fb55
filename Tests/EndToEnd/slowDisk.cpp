// Preloaded into the program, makes disks as slow as external ones can be, so that work on small clips can be observed.
// SLOW_DISK_MS: the milliseconds that a sync takes, and a write of a megabyte or more, which may bypass the page cache.
// SLOW_DISK_HOLD: a file; while it exists, these calls wait; the first that waits empties it. SLOW_DISK_LOOK_MS: the
// milliseconds that it takes to read an entry's attributes.

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

static void pauseFor(const char* variable)
{
    const char* text = std::getenv(variable);
    const long milliseconds = text ? std::atol(text) : 0;
    const timespec duration{milliseconds / 1000, milliseconds % 1000 * 1000000};
    nanosleep(&duration, nullptr);
}

static void linger()
{
    pauseFor("SLOW_DISK_MS");
    const char* hold = std::getenv("SLOW_DISK_HOLD");
    const timespec pause{0, 20'000'000};
    while (hold && truncate(hold, 0) == 0)
        nanosleep(&pause, nullptr);
}

extern "C" ssize_t write(int file, const void* bytes, size_t count)
{
    constexpr size_t much = 1 << 20;
    if (count >= much)
        linger();
    return syscall(SYS_write, file, bytes, count);
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

extern "C" int sync_file_range(int file, off64_t offset, off64_t count, unsigned flags)
{
    linger();
    return static_cast<int>(syscall(SYS_sync_file_range, file, offset, count, flags));
}

extern "C" int fstatat(int folder, const char* name, struct stat* status, int flags)
{
    pauseFor("SLOW_DISK_LOOK_MS");
    return static_cast<int>(syscall(SYS_newfstatat, folder, name, status, flags));
}
