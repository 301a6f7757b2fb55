#pragma once

#include "Platform/Location.h"

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace reelkeep {

/// A wall-clock moment with the resolution of file times.
using Date = std::chrono::sys_time<std::chrono::nanoseconds>;

/// One video file found below a scanned root.
struct VideoFile {
    std::string id;           ///< Identity of list rows; the scanner makes it equal to `relativePath`.
    Location url;             ///< Where the file was found.
    std::string relativePath; ///< Its path with every occurrence of the root's path and "/" removed.
    std::string fileName;     ///< Last component of `url`, bytes as on disk.
    std::int64_t size = 0;    ///< Bytes; 0 when the file system reports none.
    /// When the content was last modified (not when the file was created); absent when not reported.
    std::optional<Date> createdAt;

    bool operator==(const VideoFile&) const = default;
};

/// An immutable list of records, shared instead of copied: handing a million records to another thread costs nothing,
/// and neither does letting go of them.
class VideoList {
public:
    VideoList() = default;
    VideoList(std::vector<VideoFile> videos);
    VideoList(std::initializer_list<VideoFile> videos) : VideoList(std::vector<VideoFile>(videos)) {}

    std::size_t size() const { return records ? records->size() : 0; }
    bool empty() const { return size() == 0; }
    const VideoFile& operator[](std::size_t index) const { return (*records)[index]; }
    const VideoFile* begin() const { return records ? records->data() : nullptr; }
    const VideoFile* end() const { return begin() + size(); }

    bool operator==(const VideoList& other) const;

private:
    std::shared_ptr<const std::vector<VideoFile>> records;
};

/// What one analysis found.
struct ScanSummary {
    VideoList sourceVideos;      ///< Videos below the camera folder, in walk order.
    VideoList destinationVideos; ///< Videos below all review locations together, in walk order.
    VideoList missingVideos;     ///< Source videos without a counterpart, in file-browser order.
    std::vector<Location> scannedDestinationRoots;

    bool operator==(const ScanSummary&) const = default;
};

/// What one copy run did.
struct CopySummary {
    std::int64_t copiedCount = 0;
    std::int64_t skippedCount = 0; ///< Not copied because something already stood at the target.
    Location destinationRoot;

    bool operator==(const CopySummary&) const = default;
};

/// One progress report of a copy run.
struct CopyProgress {
    std::int64_t completedCount = 0; ///< Position of the file now being handled; the total in the last report.
    std::int64_t totalCount = 0;
    std::string currentFileName; ///< Empty only for an empty run.

    bool operator==(const CopyProgress&) const = default;
};

/// Choices that an operation needs and does not have.
enum class VideoSyncError { sourceFolderMissing, destinationFolderMissing, destinationReviewFoldersMissing };

/// The text shown to the user.
std::string errorDescription(VideoSyncError error);

} // namespace reelkeep

template <>
struct std::hash<reelkeep::VideoFile> {
    std::size_t operator()(const reelkeep::VideoFile& video) const;
};
