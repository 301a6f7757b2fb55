#pragma once

#include "Files/Date.h"
#include "Files/Location.h"
#include "Text/SharedText.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace reelkeep {

/// One video file found below a scanned root. The scanner lets its four texts share one storage: a million records
/// of separate texts took 364 MB.
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

/// An immutable list of records, shared instead of copied: handing a million records to another thread, or joining two
/// lists, costs nothing, and neither does letting go of them.
class VideoList {
public:
    /// Grows without moving its records: a vector would hold them twice meanwhile.
    using Records = std::deque<VideoFile>;
    class Iterator;

    VideoList() = default;
    VideoList(Records videos);
    VideoList(const std::vector<VideoFile>& videos) : VideoList(Records(videos.begin(), videos.end())) {}
    VideoList(std::initializer_list<VideoFile> videos) : VideoList(Records(videos)) {}

    /// Puts the records of another list behind these.
    void append(const VideoList& other);

    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }
    const VideoFile& operator[](std::size_t index) const;
    Iterator begin() const;
    Iterator end() const;
    /// Index of the first record with the longest relative path; 0 in an empty list. Known since the list was made.
    std::size_t longestPath() const { return longest; }
    /// The same records, not only equal ones; told at once.
    bool isSharedWith(const VideoList& other) const { return parts == other.parts; }

    bool operator==(const VideoList& other) const;

private:
    std::vector<std::shared_ptr<const Records>> parts; ///< As many as folders were scanned, at most.
    std::size_t count = 0;
    std::size_t longest = 0;
};

class VideoList::Iterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = VideoFile;
    using difference_type = std::ptrdiff_t;
    using pointer = const VideoFile*;
    using reference = const VideoFile&;

    Iterator() = default;
    Iterator(const VideoList& iterated, std::size_t first) : list(&iterated), index(first) {}

    reference operator*() const { return (*list)[index]; }
    pointer operator->() const { return &**this; }
    Iterator& operator++()
    {
        ++index;
        return *this;
    }
    Iterator operator++(int) { return {*list, index++}; }
    bool operator==(const Iterator&) const = default;
    difference_type operator-(const Iterator& other) const
    {
        return static_cast<difference_type>(index) - static_cast<difference_type>(other.index);
    }

private:
    const VideoList* list = nullptr;
    std::size_t index = 0;
};

inline const VideoFile& VideoList::operator[](std::size_t index) const
{
    auto part = parts.begin();
    for (; index >= (*part)->size(); ++part)
        index -= (*part)->size();
    return (**part)[index];
}

inline VideoList::Iterator VideoList::begin() const
{
    return {*this, 0};
}

inline VideoList::Iterator VideoList::end() const
{
    return {*this, count};
}

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
