#include "Files/FileIdentity.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace reelkeep {

std::optional<FileIdentity> identityOf(int file)
{
    struct stat status = {};
    if (::fstat(file, &status) != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino, status.st_size};
}

std::optional<FileIdentity> identityOf(int folder, const std::string& name)
{
    struct stat status = {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino, status.st_size};
}

} // namespace reelkeep
