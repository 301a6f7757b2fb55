#pragma once

#include "Fixtures/TemporaryFolder.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace reelkeep {

class FaultDisk;

/// A real file system: an image in memory, mounted for the test.
/// The mount is visible only to this process and its keeper, and its FUSE program dies with the process: however a test
/// ends, no mount, loop device, process or image is left.
class MountedDisk {
public:
    /// `kind` is one of ext4, btrfs, xfs, ntfs, exfat, tmpfs. Throws if the tools are missing.
    explicit MountedDisk(std::string kind, int mebibytes = 512);
    /// A new file system of any of these kinds except tmpfs on `disk`, which must outlive it.
    MountedDisk(std::string kind, FaultDisk& disk);
    /// The file system that is on this image already.
    MountedDisk(std::string kind, const Location& image);
    MountedDisk(const MountedDisk&) = delete;
    MountedDisk& operator=(const MountedDisk&) = delete;
    ~MountedDisk();

    /// Whether disks can be mounted here. If not, tests skip loudly.
    static bool isPossible();

    const Location& location() const { return mountPoint; }
    /// Takes the disk out and puts it in again: what is read then comes from the disk.
    void remount();
    /// The two halves of it.
    void takeOut();
    void putIn();
    void makeReadOnly();
    /// Pulls the plug of a FUSE disk: its program is killed.
    void kill();
    /// Detaches it from the tree of folders, even if it is in use.
    void detach();

private:
    void make();
    void waitUntilMounted();

    std::string kind;
    FaultDisk* below = nullptr;
    TemporaryFolder place;
    Location image;
    Location mountPoint;
    pid_t program = -1; ///< Of a FUSE disk.
};

} // namespace reelkeep
