#pragma once

#include "Files/Location.h"

#include <string>

namespace reelkeep {

/// What matters of a disk to those who read folders from it.
struct Disk {
    std::string id; ///< The same for all places on one disk, whatever its partitions; empty where it is not known.
    unsigned walkers = 1; ///< How many threads read its folders fastest.
};

/// The disk that holds a place; an unknown one where nothing stands there. `blockDevices` is the system's folder of
/// block devices by number.
Disk diskHolding(const Location& place, const std::string& blockDevices = "/sys/dev/block");

} // namespace reelkeep
