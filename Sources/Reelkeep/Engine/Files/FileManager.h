#pragma once

#include "Files/Date.h"
#include "Files/Disk.h"
#include "Files/Location.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string_view>

namespace reelkeep {

/// The copies of one run. They are completed in groups, so a copy may still be under way, under a hidden name, when
/// `copyItem` returns. It gets its final name, without replacing anything, once its data has been synced and read back
/// from the disk equal to the source. If a copy fails, those before it still get their names and those after it do not.
/// If it fails while it is under way, every later call throws its error; if `copyItem` itself throws, `finish`
/// completes those before it. Destroying the run removes copies under way. Operations throw FileError, and Stopped once
/// the token of the run is triggered. One thread uses a run.
class CopyRun {
public:
    CopyRun() = default;
    CopyRun(const CopyRun&) = delete;
    CopyRun& operator=(const CopyRun&) = delete;
    virtual ~CopyRun() = default;

    /// Completes the copies under way if one of them may get the name of `target` or of a folder above it, perhaps in
    /// another spelling. Call it before looking up or making anything there.
    virtual void completeCopiesTo(const Location& target) = 0;

    /// Copies a file to a path at which there is nothing. Keeps modification time and permissions.
    virtual void copyItem(const Location& source, const Location& target) = 0;

    /// Lets the system read the beginning of `source`, which will be copied soon, in the background. Never fails.
    virtual void readAhead(const Location& source) = 0;

    /// Returns once every copy has its name, and the names are on the disk.
    virtual void finish() = 0;
};

/// What the engine needs of the file system. Every operation may be called from any thread.
/// Failures are FileErrors; long operations throw Stopped once their token is triggered.
class FileManager {
public:
    /// A regular file found by a walk.
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
    /// in the order of the file system. `wanted` is called from several threads at once. Hidden entries, packages and
    /// links are left out. Finds nothing if the root is missing or not allowed.
    virtual void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                              const std::stop_token& stop) const = 0;

    /// The disk of that path, and how many threads `regularFiles` uses for it.
    virtual Disk diskHolding(const Location& place) const = 0;

    /// Makes the folder and every missing folder above it; no failure if it exists.
    virtual void createDirectory(const Location& folder) = 0;

    /// Whether there is any entry at that path: a file, a folder, even a broken link. The reservation of a killed copy
    /// does not count.
    virtual bool fileExists(const Location& place) const = 0;

    virtual std::unique_ptr<CopyRun> beginCopying(const std::stop_token& stop) = 0;
};

} // namespace reelkeep
