#pragma once

#include "Files/Disk.h"
#include "Files/Location.h"
#include "VideoSyncModels.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace reelkeep {

/// A file-system operation that failed. `what()` is the text for the user: the path and the reason, in Spanish.
class FileError : public std::runtime_error {
public:
    FileError(std::string filePath, int errorNumber);
    FileError(std::string filePath, int errorNumber, const std::string& reason);

    const std::string& path() const { return failedPath; }
    /// The `errno` value behind the failure; 0 where the failure is not a system call's.
    int code() const { return number; }

private:
    std::string failedPath;
    int number;
};

/// Thrown by long operations once their stop token was triggered; never shown to the user.
class Stopped : public std::exception {
public:
    const char* what() const noexcept override { return "stopped"; }
};

/// What the engine needs of the file system. It holds no state and no open files between calls, and every operation
/// may be called from any thread. Tests replace it with a recording one.
class FileManager {
public:
    /// A regular file met by a walk.
    struct Entry {
        Location url;
        std::int64_t size = 0;
        std::optional<Date> contentModificationDate;
    };
    using NameFilter = std::function<bool(std::string_view fileName)>;
    using FoundFile = std::function<void(Entry file)>;

    FileManager() = default;
    FileManager(const FileManager&) = delete;
    FileManager& operator=(const FileManager&) = delete;
    virtual ~FileManager() = default;

    /// Calls `found`, on the caller's thread, for each regular file below `root` whose name is `wanted`: depth first,
    /// in the order of the file system. Several threads at once may ask whether a name is wanted. Hidden entries,
    /// packages and links are left out. Nothing for a root that is missing or cannot be listed. Throws FileError when
    /// an entry's attributes cannot be read; throws Stopped.
    virtual void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                              const std::stop_token& stop = {}) const;

    /// Which disk holds that place, and how many threads `regularFiles` takes for it.
    virtual Disk diskHolding(const Location& place) const;

    /// Makes the folder and every missing folder above it; no failure where it exists. Throws FileError.
    virtual void createDirectory(const Location& folder) const;

    /// Whether any entry stands at that place: a file, a folder, a link that leads nowhere. Throws FileError when it
    /// cannot be told. What a killed `copyItem` left in its stead is none.
    virtual bool fileExists(const Location& place) const;

    /// Copies a file to a place where nothing stands. The target appears whole and synced to its disk, or not at all;
    /// nothing is ever replaced. Keeps modification time and permissions. Throws FileError; throws Stopped.
    virtual void copyItem(const Location& source, const Location& target, const std::stop_token& stop = {}) const;

    /// Lets the system read the beginning of `source`, which is to be copied soon, while the caller goes on. Never
    /// fails.
    virtual void readAhead(const Location& source) const;
};

} // namespace reelkeep
