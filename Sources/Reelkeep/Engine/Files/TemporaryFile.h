#pragma once

#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Files/FileIdentity.h"
#include "Files/Location.h"
#include "Files/TransferPace.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace reelkeep {

class Leftover;

/// How fast a disk takes data, for each way to it, from one file to the next.
struct WritingPace {
    WritingPace();

    TransferPace flushing; ///< Of a disk that the kernel writes to.
    TransferPace syncing;  ///< Of a FUSE disk.
};

/// A file on its way to `target`: it grows under a hidden name in the target's folder and takes its final name in one
/// step, whole and synced. If it never comes to that, the hidden file goes with this object. Before every step by name
/// the name is compared with the open file: another program may have put its own there.
/// Every operation throws FileError about the target. One thread at a time may use it.
class TemporaryFile {
public:
    /// Opens the target's folder; refuses a size in bytes that the target's file system cannot hold. `pace` is used by
    /// `portion` and `write` only.
    TemporaryFile(const Location& target, std::int64_t size, WritingPace& pace);
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { remove(); }

    /// Makes the hidden file; refuses if something stands at the target's place, or if another run is copying to it.
    /// Replaces what a killed run left for the same target; if that cannot be taken over, takes a name of its own.
    void create();
    /// Shares the blocks of the open file `source` if both lie on one file system that can. False if not.
    bool clone(int source);
    /// Refuses if the disk reports its free space and has too little. To be called before the first `write`.
    void refuseWithoutRoom();
    /// Appends; starts the write-back at once, so that little is ever unwritten. Faster from memory that begins at the
    /// border of a block.
    void write(std::span<const std::byte> bytes);
    /// How many bytes to write at once, so that it does not take long.
    std::int64_t portion() const { return pace.portion(); }
    /// Takes over modification time and the rights to read and write, and starts the write-back of all that is left.
    void finish(const struct stat& source);
    /// How many of the bytes written the disk may not have taken yet.
    std::int64_t unsyncedBytes() const { return written - flushed; }
    /// Of what was written, read again through the kernel's memory into `room`; throws Stopped.
    std::uint64_t hash(std::span<std::byte> room, const std::stop_token& stop) const;

    /// Puts everything but the name on the disk.
    void sync();
    /// Reads back what was synced, past the kernel's memory, into `room`; throws if it has another hash. Throws
    /// Stopped.
    void requireOnDisk(std::uint64_t expectedHash, std::span<std::byte> room, const std::stop_token& stop);
    /// Gives the file its final name without replacing anything.
    void publish();
    /// Puts the names in its folder on the disk.
    void syncNames();

    /// Which file grows, and in which folder. Throws if it cannot be known.
    FileIdentity identity() const;
    FileIdentity folderIdentity() const;
    /// Where it grows.
    Location hiddenPlace() const { return target.deletingLastPathComponent().appending(currentName); }
    /// Whether it grows under a name that is not found again, since something stood at the usual one.
    bool isUnderSpareName() const { return isSpare; }

private:
    /// What stands at the target's place.
    enum class Holder { none, reservation, foreign, unknown };

    bool createAs(const std::string& name);
    bool createOverLeftover(const std::string& name);
    void createUnderSpareName(const std::string& usual);
    bool isOld(const Leftover& leftover) const;
    void takeOverSealed();
    void lockOwn();
    bool isFuse() const;
    bool hasRoom() const;
    std::uint64_t hashOnDisk(std::span<std::byte> room, const std::stop_token& stop);
    void goDirectly(bool directly);
    void flush();
    int syncPortion();
    int writeOutPortion();
    bool publishByRename();
    bool publishByLink();
    void publishOverReservation();
    void seal();
    void requireReservation() const;
    Holder holderOfTarget(int flags) const;
    void remove();
    void requireOurs() const;
    FileError failure(int errorNumber) const;
    FileError takenByAnotherRun() const;
    FileError publishingFailure(int errorNumber) const;

    Location target;
    std::string targetName;
    std::int64_t size;
    FileDescriptor folder;
    struct statfs fileSystem = {};
    FileDescriptor file;
    std::string currentName; ///< Of our own file; empty as long as there is none and once it has its final name.
    bool isSpare = false;
    bool isDirect = false;                              ///< Past the kernel's memory, right to the disk.
    std::int64_t written = 0;                           ///< Bytes handed to the kernel.
    std::int64_t flushing = 0;                          ///< How many of them the disk has been told to take.
    std::int64_t flushed = 0;                           ///< How many of those it has taken.
    TransferPace& pace;                                 ///< Of what the disk takes, on whichever way.
    std::chrono::steady_clock::time_point portionBegan; ///< When the disk became free for the latest one.
};

/// The largest file that a file system of this type (`f_type` of `statfs`) can hold; absent if there is no such limit
/// in practice.
std::optional<std::int64_t> largestFile(std::int64_t fileSystemType);

/// Whether what stands at `place` is only the empty file with which a run, killed in the act of publishing, held the
/// name on a disk that can neither link nor rename without replacing. Throws FileError if that cannot be known.
bool isAbandonedReservation(const Location& place, const struct stat& status);

} // namespace reelkeep
