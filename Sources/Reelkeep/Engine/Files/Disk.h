#pragma once

#include "Files/Location.h"

#include <string>

namespace reelkeep {

/// The properties of a disk on which reading its folders depends.
struct Disk {
    std::string id;       ///< The same for all paths on one disk, whatever its partitions; empty if it is not known.
    unsigned walkers = 1; ///< How many threads read its folders fastest.
};

/// The disk of a path; an unknown one if there is nothing. `blockDevices` is the system's folder of block devices by
/// number.
Disk diskHolding(const Location& place, const std::string& blockDevices = "/sys/dev/block");

/// Whether the open file or folder is on a disk of this machine, whose locks every writer sees: not on a network, nor
/// served by a program that may use one.
bool isLocalDisk(int file);

} // namespace reelkeep
