#pragma once

#include "Files/FileDescriptor.h"

#include <cerrno>
#include <string>
#include <sys/stat.h>

namespace reelkeep {

/// Repeats a system call that a signal interrupted.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Opens a path below an open folder, close-on-exec. Returns none and sets `errno` on failure.
FileDescriptor openAt(int folder, const char* path, int flags, mode_t mode = 0);

/// The same for reading, without changing the access time if the file system allows that, which it does only for the
/// owner of the file.
FileDescriptor openQuietly(int folder, const char* path, int flags);

/// A path in a form that system calls accept even if it has PATH_MAX bytes or more.
class ReachablePath {
public:
    /// Opens folders in between if the path is too long. If that fails, calls with this path fail with the same error.
    explicit ReachablePath(const std::string& path);

    /// The folder to give to the `...at` calls together with `rest`.
    int folder() const { return nearest ? nearest.get() : start; }
    const char* rest() const { return remainder.c_str(); }

private:
    FileDescriptor nearest;
    int start;
    std::string remainder;
};

/// Puts changes of the entries of `folder` on the disk. If a folder cannot be synced alone, or was opened without the
/// right to read it, the whole file system of the open file `inside` is synced. Returns 0, or -1 and sets `errno`.
int syncFolder(int folder, int inside);

} // namespace reelkeep
