#include "CopyJob.h"

#include "Files/Stopped.h"

#include <cstdint>

namespace reelkeep {

CopySummary CopyJob::run(FileManager& fileManager, const ProgressSink& progress, const std::stop_token& stop) const
{
    const auto total = static_cast<std::int64_t>(videos.size());
    CopySummary summary{.destinationRoot = destinationRoot};
    for (std::size_t number = 0; number < videos.size(); ++number) {
        const VideoFile& video = videos[number];
        throwIfStopped(stop);
        const SharedText& relativeTarget = preserveFolderStructure ? video.relativePath : video.fileName;
        const Location target = destinationRoot.appending(relativeTarget);
        progress({.completedCount = summary.copiedCount + summary.skippedCount,
                  .totalCount = total,
                  .currentFileName = video.fileName});
        fileManager.createDirectory(target.deletingLastPathComponent());
        if (fileManager.fileExists(target)) {
            ++summary.skippedCount;
            continue;
        }
        // Only reading: nothing else is done for the next video before this one is on its disk. With many small videos
        // it saves a third of the time.
        if (number + 1 < videos.size())
            fileManager.readAhead(sourceRoot.appending(videos[number + 1].relativePath));
        // Never `url`: if another root was chosen since the scan, the same relative path below it is meant.
        fileManager.copyItem(sourceRoot.appending(video.relativePath), target, stop);
        ++summary.copiedCount;
    }
    progress({.completedCount = total,
              .totalCount = total,
              .currentFileName = videos.empty() ? SharedText() : videos[videos.size() - 1].fileName});
    return summary;
}

} // namespace reelkeep
