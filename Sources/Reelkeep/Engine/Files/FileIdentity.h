#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace reelkeep {

/// The file that a name or a descriptor refers to, and its size. A name alone proves nothing: another program may have
/// put its own file there.
struct FileIdentity {
    dev_t device;
    ino_t inode;
    off_t size;

    bool operator==(const FileIdentity&) const = default;
};

/// Absent on failure, which sets `errno`.
std::optional<FileIdentity> identityOf(int file);
/// The same of `name`; a link is not followed.
std::optional<FileIdentity> identityOf(int folder, const std::string& name);

/// Ignores the size, since other programs may write to a file that has its final name. False if either is absent.
inline bool isSameFile(const std::optional<FileIdentity>& one, const std::optional<FileIdentity>& other)
{
    return one && other && one->device == other->device && one->inode == other->inode;
}

} // namespace reelkeep
