#pragma once

#include "Fixtures/FaultDiskControl.h"
#include "Fixtures/TemporaryFolder.h"

#include <sys/types.h>

namespace reelkeep {

/// A disk of the tests' own that fails, slows down, hangs or lies when it is told to: an image in memory, served as a
/// file by a program that all requests of the file system above go through. Like a MountedDisk it leaves nothing
/// behind, however the test ends.
class FaultDisk {
public:
    enum class Log { none, writes };

    /// Starts healthy.
    explicit FaultDisk(int mebibytes, Log log = Log::none);
    FaultDisk(const FaultDisk&) = delete;
    FaultDisk& operator=(const FaultDisk&) = delete;
    /// Whatever is mounted above must have gone before.
    ~FaultDisk();

    /// Whether this process may mount and the kernel has FUSE and loop devices. Tests skip, loudly, if not.
    static bool isPossible();

    /// What is stored, past all faults.
    const Location& image() const { return stored; }
    /// The same as the disk shows it: a loop device goes above this.
    Location file() const { return folder.appending("disk"); }
    /// Entries of FaultDiskLogEntry with their data; empty without Log::writes.
    const Location& log() const { return written; }

    FaultDiskControl& control() { return *shared; }
    /// From the `number`-th read from now on, each fails. 1 is the very next.
    void failReadsFrom(std::uint64_t number, int errorNumber);
    /// The same of writes, and of every flush after them.
    void failWritesFrom(std::uint64_t number, int errorNumber);
    /// Ends all faults and limits. What was written stays as it is.
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
