#pragma once

#include "Files/FileDescriptor.h"

#include <ctime>
#include <string>

namespace reelkeep {

/// The entry at a hidden name of ours. A killed run leaves its file there; a living run holds a lock on it.
class Leftover {
public:
    enum class State {
        none,      ///< There is nothing, or the disk does not allow the name.
        abandoned, ///< We have the lock now, so no run is using it.
        living,    ///< Another run is using it.
        obstacle,  ///< It cannot be taken over: another user's, not a regular file, or on a disk without locks.
    };

    /// Examines `name` in the open folder, and locks its file as long as this object lives.
    Leftover(int openFolder, std::string hiddenName);

    State state() const { return found; }
    /// Whether its data and attributes are older than `moment`, by the clock of its disk.
    bool isUnchangedSince(const struct timespec& moment) const;
    /// Removes it if the name still refers to the locked file. Returns false and sets `errno` if it was not removed.
    bool remove() const;

private:
    State examine();
    bool lock();
    bool reopenWritable();

    int folder;
    std::string name;
    FileDescriptor file;
    State found;
};

} // namespace reelkeep
