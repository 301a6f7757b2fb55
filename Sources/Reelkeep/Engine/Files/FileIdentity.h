#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace reelkeep {

/// Which file a name or a descriptor stands for, and how long it is. A name proves nothing by itself: another program
/// may have put its own file there.
struct FileIdentity {
    dev_t device;
    ino_t inode;
    off_t size;

    bool operator==(const FileIdentity&) const = default;
};

/// Absent on failure, with `errno`.
std::optional<FileIdentity> identityOf(int file);
/// Of what stands at `name`, a link itself included. Absent on failure, with `errno`.
std::optional<FileIdentity> identityOf(int folder, const std::string& name);

/// Whatever its length: a file that everybody sees may be written to. False if either is absent.
inline bool isSameFile(const std::optional<FileIdentity>& one, const std::optional<FileIdentity>& other)
{
    return one && other && one->device == other->device && one->inode == other->inode;
}

} // namespace reelkeep
