#pragma once

#include "Fixtures/FaultDiskControl.h"
#include "Fixtures/TemporaryFolder.h"

#include <sys/types.h>

namespace reelkeep {

/// A disk that fails, slows down, hangs or lies on demand: an image in memory, served as a file by a program that sees
/// every request of the file system above. Like a MountedDisk it leaves nothing behind, however the test ends.
class FaultDisk {
public:
    enum class Log { none, writes };

    /// The disk starts healthy.
    explicit FaultDisk(int mebibytes, Log log = Log::none);
    FaultDisk(const FaultDisk&) = delete;
    FaultDisk& operator=(const FaultDisk&) = delete;
    /// Anything mounted on it must be unmounted before.
    ~FaultDisk();

    /// Whether this process may mount and the kernel has FUSE and loop devices. Tests skip, loudly, if not.
    static bool isPossible();

    /// What is really stored.
    const Location& image() const { return stored; }
    /// What the disk shows, faults included. A loop device is put on this.
    Location file() const { return folder.appending("disk"); }
    /// FaultDiskLogEntry records, each followed by its data; empty without Log::writes.
    const Location& log() const { return written; }

    FaultDiskControl& control() { return *shared; }
    /// Fails every read from the `number`-th from now on; 1 is the next one.
    void failReadsFrom(std::uint64_t number, int errorNumber);
    /// Does the same with writes, and with every flush after them.
    void failWritesFrom(std::uint64_t number, int errorNumber);
    /// Ends all faults and limits. The stored data stays as it is.
    void heal();

private:
    TemporaryFolder place;
    Location stored;
    Location folder;
    Location written;
    FaultDiskControl* shared;
    pid_t program;
};

} // namespace reelkeep
