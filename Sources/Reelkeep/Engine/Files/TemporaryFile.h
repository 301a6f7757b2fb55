#pragma once

#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Files/Location.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace reelkeep {

/// A file on its way to `target`: it grows under a hidden name in the target's folder and takes its final name in one
/// step, whole and synced. Where it never comes to that, the hidden file goes with this object.
/// Every operation throws FileError about the target.
class TemporaryFile {
public:
    /// Opens the target's folder; refuses a size in bytes that the target's file system cannot hold.
    TemporaryFile(const Location& target, std::int64_t size);
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { remove(); }

    /// Makes the hidden file; refuses where something stands at the target's place. What a killed run left behind for
    /// the same target is removed first: it is known by its name and by lacking the lock that a living run holds.
    void create();
    /// Shares the blocks of the open file `source` where both lie on one file system that can. False where not.
    bool clone(int source);
    /// Refuses where the disk tells its free space and has too little.
    void refuseWithoutRoom();
    /// Appends; sends it to the disk at once, so that little is ever unwritten. Faster from memory that begins at the
    /// border of a block.
    void write(std::span<const std::byte> bytes);
    /// Takes over modification time and the rights to read and write, and puts everything on the disk.
    void finish(const struct stat& source);
    /// Gives the file its final name without replacing anything, and puts that on the disk.
    void publish();

private:
    /// Who stands at the target's place.
    enum class Holder { nobody, reservation, another, unknown };

    void removeLeftover(const std::string& name);
    void lock(int descriptor, const std::string& name);
    bool hasRoom() const;
    void writeDirectly(bool directly);
    void flush();
    bool publishByRename();
    bool publishByLink();
    void publishOverReservation();
    void seal();
    bool isNothingButReserved() const;
    Holder lookAtTarget(int flags) const;
    void remove();
    FileError failure(int errorNumber) const;
    FileError publishingFailure(int errorNumber) const;

    Location target;
    std::string targetName;
    std::int64_t size;
    FileDescriptor folder;
    struct statfs fileSystem = {};
    FileDescriptor file;
    std::string currentName;   ///< Of our own file; empty as long as there is none and once it has its final name.
    bool isDirect = false;     ///< Past the kernel's memory, right to the disk.
    std::int64_t written = 0;  ///< Bytes handed to the kernel.
    std::int64_t flushing = 0; ///< How many of them the disk has been told to take.
};

/// The largest file that a file system of this type (`f_type` of `statfs`) can hold; absent where that is no concern.
std::optional<std::int64_t> largestFile(std::int64_t fileSystemType);

/// Whether what stands at `place` is only the empty file with which a run, killed in the act of publishing, held the
/// name on a disk that can neither link nor rename without replacing. Throws FileError when it cannot be told.
bool isAbandonedReservation(const Location& place, const struct stat& status);

} // namespace reelkeep
