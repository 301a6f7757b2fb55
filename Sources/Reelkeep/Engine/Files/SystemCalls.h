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

/// Opens a path below an open folder, closed in programs that this one starts. None on failure, with `errno`.
FileDescriptor openAt(int folder, const char* path, int flags, mode_t mode = 0);

/// The same for reading, without leaving a new access time behind if the file system allows that: it does for the
/// owner's files only.
FileDescriptor openQuietly(int folder, const char* path, int flags);

/// A path as system calls take it: they refuse paths of PATH_MAX bytes and more, which this one may have.
class ReachablePath {
public:
    /// Opens folders in between if the path is too long. If that fails, the calls below fail with its error.
    explicit ReachablePath(const std::string& path);

    /// The folder to give to the `...at` calls together with `rest`.
    int folder() const { return nearest ? nearest.get() : start; }
    const char* rest() const { return remainder.c_str(); }

private:
    FileDescriptor nearest;
    int start;
    std::string remainder;
};

/// Puts on the disk what was done to the entries of `folder`. If a folder cannot be synced by itself, or is open
/// without the right to read it, the file system that holds the open file `inside` is synced as a whole. 0, or -1 and
/// `errno`.
int syncFolder(int folder, int inside);

} // namespace reelkeep
