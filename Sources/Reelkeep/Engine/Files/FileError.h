#pragma once

#include <stdexcept>
#include <string>
#include <sys/types.h>

namespace reelkeep {

/// A file-system operation that failed. `what()` is the text for the user: the path, without a separator at its end,
/// and the reason, in Spanish.
class FileError : public std::runtime_error {
public:
    FileError(const std::string& filePath, int errorNumber);
    FileError(const std::string& filePath, int errorNumber, const std::string& reason);

    const std::string& path() const { return failedPath; }
    /// The `errno` value behind the failure; 0 if no system call failed.
    int code() const { return number; }

private:
    std::string failedPath;
    int number;
};

/// Why a system call failed, in the user's words: no capital at its start, no stop at its end.
std::string failureReason(int errorNumber);

/// The error if a new entry cannot be made at `path` in the open folder `folder`. Some file systems report "not found"
/// for a name that they do not allow; if the folder itself still exists, that is the reason.
FileError creationError(int folder, const std::string& path, int errorNumber);

/// Reading from, or writing to, an open file on `device` failed. Distinguishes a damaged disk from one that was pulled
/// out.
FileError readError(const std::string& path, int errorNumber, dev_t device);
FileError writeError(const std::string& path, int errorNumber, dev_t device);

/// Whether the disk with a device number is gone. False if that cannot be known (network, FUSE, btrfs).
bool isDisconnected(dev_t device);

} // namespace reelkeep
