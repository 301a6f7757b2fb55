#pragma once

#include "Files/FileManager.h"

#include <string>
#include <sys/types.h>

namespace reelkeep {

/// Why a system call failed, in the user's words: no capital at its start, no stop at its end.
std::string failureReason(int errorNumber);

/// A new entry could not be made at `path` in the open folder `folder`. Some file systems say "not found" for a name
/// that they do not admit; as long as the folder itself is there, that is what it means.
FileError creationError(int folder, std::string path, int errorNumber);

/// Reading from, or writing to, an open file on `device` failed. Tells a damaged disk from one that was pulled out.
FileError readError(std::string path, int errorNumber, dev_t device);
FileError writeError(std::string path, int errorNumber, dev_t device);

/// Whether the disk behind a device number has gone. False where that cannot be told (network, FUSE, btrfs).
bool isDisconnected(dev_t device);

} // namespace reelkeep
