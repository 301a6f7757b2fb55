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

/// How fast a disk takes data, learned from one file for the next.
struct WritingPace {
    WritingPace();

    TransferPace flushing; ///< For a disk with a driver in the kernel.
    TransferPace syncing;  ///< For a FUSE disk.
};

/// A file that grows under a hidden name in the target's folder and gets its final name in one step, complete and
/// synced. If it never gets that, this object's destructor removes the hidden file. Before every step by name, the name
/// is compared with the open file: another program may have put its own there. Every operation throws FileError about
/// the target. One thread at a time may use it.
class TemporaryFile {
public:
    /// Opens the target's folder. Refuses a size in bytes that the target's file system cannot hold. `pace` is used by
    /// `portion` and `write` only.
    TemporaryFile(const Location& target, std::int64_t size, WritingPace& pace);
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { remove(); }

    /// Makes the hidden file. Refuses if the target exists or another run is copying to it. Replaces the leftover of a
    /// killed run; if that cannot be taken over, uses a spare name.
    void create();
    /// Shares the blocks of the open file `source` if both are on one file system that can. Returns false if not.
    bool clone(int source);
    /// Refuses if the disk reports too little free space. Call it before the first `write`.
    void refuseWithoutRoom();
    /// Appends. Starts the write-back early, so that little is ever unwritten. Faster from memory aligned to blocks.
    void write(std::span<const std::byte> bytes);
    /// How many bytes to write at once, so that no call takes long.
    std::int64_t portion() const { return pace.portion(); }
    /// Sets modification time and read and write permissions as in `source`, and starts the write-back of the rest.
    void finish(const struct stat& source);
    /// How many of the written bytes may not be on the disk yet.
    std::int64_t unsyncedBytes() const { return written - flushed; }
    /// The hash of the file, read into `room` through the page cache; throws Stopped.
    std::uint64_t hash(std::span<std::byte> room, const std::stop_token& stop) const;

    /// Puts everything but the name on the disk.
    void sync();
    /// Reads the synced file into `room`, past the page cache, and throws if it has another hash. Throws Stopped.
    void requireOnDisk(std::uint64_t expectedHash, std::span<std::byte> room, const std::stop_token& stop);
    /// Gives the file its final name without replacing anything.
    void publish();
    /// Puts the names in its folder on the disk.
    void syncNames();

    /// The identities of the hidden file and of its folder. They throw if that cannot be known.
    FileIdentity identity() const;
    FileIdentity folderIdentity() const;
    /// The path of the hidden file.
    Location hiddenPlace() const { return target.deletingLastPathComponent().appending(currentName); }
    /// Whether it has a random hidden name, which no later run finds, because the usual one was taken.
    bool isUnderSpareName() const { return isSpare; }

private:
    /// The entry that has the target's name.
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
    /// The file that the hidden name refers to now; absent if there is none.
    std::optional<FileIdentity> namedIdentity() const;
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
    std::string currentName; ///< Of our own file; empty before it exists and once it has its final name.
    bool isSpare = false;
    bool isDirect = false;                              ///< Writes bypass the page cache.
    std::int64_t written = 0;                           ///< Bytes handed to the kernel.
    std::int64_t flushing = 0;                          ///< How many of them the kernel was told to write to the disk.
    std::int64_t flushed = 0;                           ///< How many of those have been written.
    TransferPace& pace;                                 ///< The one for this kind of disk.
    std::chrono::steady_clock::time_point portionBegan; ///< When the disk began with the current portion.
};

/// The largest file that a file system of this type (`f_type` of `statfs`) can hold; absent if there is no such limit
/// in practice.
std::optional<std::int64_t> largestFile(std::int64_t fileSystemType);

/// Whether the entry at `place` is only the reservation of a run that was killed while it published, on a disk that can
/// neither link nor rename without replacing. Throws FileError if that cannot be known.
bool isAbandonedReservation(const Location& place, const struct stat& status);

} // namespace reelkeep
