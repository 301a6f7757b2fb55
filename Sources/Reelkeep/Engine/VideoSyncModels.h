#pragma once

#include "Files/Date.h"
#include "Files/Location.h"
#include "Text/SharedText.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace reelkeep {

/// One video file found below a scanned root. The scanner lets its four texts share one storage: a million records
/// with separate texts took 364 MB.
struct VideoFile {
    SharedText id;           ///< Identity of list rows; the scanner makes it equal to `relativePath`.
    Location url;            ///< Where the file was found.
    SharedText relativePath; ///< Its path with every occurrence of the root's path and "/" removed.
    SharedText fileName;     ///< Last component of `url`, bytes as on disk.
    std::int64_t size = 0;   ///< Bytes; 0 when the file system reports none.
    /// When the content was last modified (not when the file was created); absent when not reported.
    std::optional<Date> createdAt;

    bool operator==(const VideoFile&) const = default;
};

/// An immutable list of records. Copies share the records: handing a million of them to another thread costs nothing,
/// and neither does giving them up.
class VideoList {
public:
    /// Grows without moving its records; a vector would hold them twice while it grows.
    using Records = std::deque<VideoFile>;

    VideoList() : VideoList(Records()) {}
    VideoList(Records videos);
    VideoList(const std::vector<VideoFile>& videos) : VideoList(Records(videos.begin(), videos.end())) {}
    VideoList(std::initializer_list<VideoFile> videos) : VideoList(Records(videos)) {}
    // Without moves, no list is ever left without records.
    VideoList(const VideoList&) = default;
    VideoList& operator=(const VideoList&) = default;
    ~VideoList() = default;

    std::size_t size() const { return records->size(); }
    bool empty() const { return records->empty(); }
    const VideoFile& operator[](std::size_t index) const { return (*records)[index]; }
    Records::const_iterator begin() const { return records->begin(); }
    Records::const_iterator end() const { return records->end(); }

    bool operator==(const VideoList& other) const { return records == other.records || *records == *other.records; }

private:
    std::shared_ptr<const Records> records;
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
    std::int64_t skippedCount = 0; ///< Not copied because the target already existed.
    Location destinationRoot;

    bool operator==(const CopySummary&) const = default;
};

/// One progress report of a copy run.
struct CopyProgress {
    std::int64_t completedCount = 0; ///< Zero-based index of the current file; the total in the last report.
    std::int64_t totalCount = 0;
    std::string currentFileName; ///< Empty only for an empty run.

    bool operator==(const CopyProgress&) const = default;
};

/// Choices that an operation needs and the user has not made.
enum class VideoSyncError { sourceFolderMissing, destinationFolderMissing, destinationReviewFoldersMissing };

/// The text shown to the user.
std::string errorDescription(VideoSyncError error);

} // namespace reelkeep

template <>
struct std::hash<reelkeep::VideoFile> {
    std::size_t operator()(const reelkeep::VideoFile& video) const;
};
