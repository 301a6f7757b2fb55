#pragma once

#include "Files/Location.h"

#include <string>

namespace reelkeep {

/// What reading folders from a disk depends on.
struct Disk {
    std::string id;       ///< The same for all places on one disk, whatever its partitions; empty if it is not known.
    unsigned walkers = 1; ///< How many threads read its folders fastest.
};

/// The disk that holds a place; an unknown one if nothing stands there. `blockDevices` is the system's folder of
/// block devices by number.
Disk diskHolding(const Location& place, const std::string& blockDevices = "/sys/dev/block");

/// Whether the open file or folder lies on a disk of this machine, where locks are known to all who may write there:
/// not on a network, nor behind a program that may stand for one.
bool isLocalDisk(int file);

} // namespace reelkeep
