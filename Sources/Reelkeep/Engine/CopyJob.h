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
    bool preserveFolderStructure = true; ///< Otherwise every file goes right into `destinationRoot`.

    using ProgressSink = std::function<void(const CopyProgress&)>;

    /// Copies each video that does not stand at its target yet. `progress` is called on this thread: before each file
    /// and once at the end, when all is on the disk: n + 1 reports for n records. Throws FileError at the first failure
    /// in the order of the list, with no summary and no last report; what was copied before stays. Throws Stopped.
    CopySummary run(FileManager& fileManager, const ProgressSink& progress, const std::stop_token& stop = {}) const;

private:
    Location targetOf(const VideoFile& video) const;
    /// Never `url`: if another root was chosen since the scan, the same relative path below it is meant.
    Location sourceOf(const VideoFile& video) const { return sourceRoot.appending(video.relativePath); }
    /// False if it is skipped.
    bool copy(const VideoFile& video, FileManager& fileManager, CopyRun& copies) const;
    void readAhead(const VideoFile& video, const FileManager& fileManager, CopyRun& copies) const;
};

} // namespace reelkeep
