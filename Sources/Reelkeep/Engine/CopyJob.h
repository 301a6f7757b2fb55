#pragma once

#include "Files/FileManager.h"
#include "VideoSyncModels.h"

#include <functional>
#include <stop_token>

namespace reelkeep {

/// One run of copying: immutable values, captured at its start.
struct CopyJob {
    VideoList videos; ///< In the order in which they are copied.
    Location sourceRoot;
    Location destinationRoot;
    bool preserveFolderStructure = true; ///< Otherwise every file goes directly into `destinationRoot`.

    using ProgressSink = std::function<void(const CopyProgress&)>;

    /// Copies each video whose target does not exist. Calls `progress` on this thread before each file, and once more
    /// when all of them are on the disk. Throws FileError at the first failure in list order, without a summary and
    /// without the last report; the videos before it stay. Throws Stopped.
    CopySummary run(FileManager& fileManager, const ProgressSink& progress, const std::stop_token& stop = {}) const;

private:
    Location targetOf(const VideoFile& video) const;
    /// Never `url`: if another root has been chosen since the scan, the same relative path below that one is copied.
    Location sourceOf(const VideoFile& video) const { return sourceRoot.appending(video.relativePath); }
    /// False if it is skipped.
    bool copy(const VideoFile& video, FileManager& fileManager, CopyRun& copies) const;
    void readAhead(const VideoFile& video, const FileManager& fileManager, CopyRun& copies) const;
};

} // namespace reelkeep
