#pragma once

#include "Files/FileDescriptor.h"

#include <ctime>
#include <string>

namespace reelkeep {

/// What stands at a hidden name of ours. A killed run leaves its file there; a living run holds a lock on it.
class Leftover {
public:
    enum class State {
        none,      ///< Nothing stands there, or the disk does not admit the name.
        abandoned, ///< We hold the lock now, so no run is at work on it.
        living,    ///< Another run is at work.
        obstacle,  ///< It cannot be taken over: another user's, no regular file, or the disk has no locks.
    };

    /// Examines `name` in the open folder, and locks what stands there as long as this object lives.
    Leftover(int openFolder, std::string hiddenName);

    State state() const { return found; }
    /// Whether its data and attributes are older than that, by the clock of its disk.
    bool isUnchangedSince(const struct timespec& moment) const;
    /// Removes it if the name still stands for what was locked. False, with `errno`, if it could not be removed.
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
