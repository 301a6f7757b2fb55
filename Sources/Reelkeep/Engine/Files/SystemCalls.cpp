#include "Files/SystemCalls.h"

#include <climits>
#include <fcntl.h>
#include <unistd.h>

namespace reelkeep {

FileDescriptor openAt(int folder, const char* path, int flags, mode_t mode)
{
    return FileDescriptor(uninterrupted([&] { return ::openat(folder, path, flags | O_CLOEXEC, mode); }));
}

FileDescriptor openQuietly(int folder, const char* path, int flags)
{
    FileDescriptor opened = openAt(folder, path, flags | O_NOATIME);
    return opened || errno != EPERM ? std::move(opened) : openAt(folder, path, flags);
}

ReachablePath::ReachablePath(const std::string& path) : start(AT_FDCWD), remainder(path)
{
    while (remainder.size() >= PATH_MAX) {
        const auto separator = remainder.rfind('/', PATH_MAX - sizeof "/.");
        if (separator == std::string::npos || separator == 0)
            return; // a single name of that length, with which every call fails
        const std::string chunk = remainder.substr(0, separator);
        FileDescriptor next = openAt(folder(), chunk.c_str(), O_PATH | O_DIRECTORY);
        if (!next) {
            remainder = chunk + "/."; // not a folder, or not reachable: every call with this path fails
            return;
        }
        nearest = std::move(next);
        remainder.erase(0, remainder.find_first_not_of('/', separator));
    }
}

int syncFolder(int folder, int inside)
{
    const int synced = uninterrupted([&] { return ::fsync(folder); });
    if (synced == 0 || (errno != EBADF && errno != EINVAL && errno != ENOTSUP && errno != ENOSYS))
        return synced;
    return uninterrupted([&] { return ::syncfs(inside); });
}

} // namespace reelkeep
