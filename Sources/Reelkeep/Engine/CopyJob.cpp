#include "CopyJob.h"

#include "Files/FileError.h"
#include "Files/Stopped.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace reelkeep {

namespace {

/// Keeping the card busy with the next videos saves a third of the time if there are many small ones.
constexpr std::size_t readAheadBy = 2;

} // namespace

CopySummary CopyJob::run(FileManager& fileManager, const ProgressSink& progress, const std::stop_token& stop) const
{
    const auto total = static_cast<std::int64_t>(videos.size());
    const std::unique_ptr<CopyRun> copies = fileManager.beginCopying(stop);
    CopySummary summary{.destinationRoot = destinationRoot};
    try {
        for (std::size_t number = 0; number < videos.size(); ++number) {
            throwIfStopped(stop);
            progress({.completedCount = static_cast<std::int64_t>(number),
                      .totalCount = total,
                      .currentFileName = videos[number].fileName});
            if (number + readAheadBy < videos.size())
                readAhead(videos[number + readAheadBy], fileManager, *copies);
            const bool isCopied = copy(videos[number], fileManager, *copies);
            ++(isCopied ? summary.copiedCount : summary.skippedCount);
        }
        copies->finish();
    } catch (const Stopped&) {
        throw;
    } catch (...) {
        copies->finish(); // throws the failure of an earlier video instead
        throw;
    }
    progress({.completedCount = total,
              .totalCount = total,
              .currentFileName = videos.empty() ? SharedText() : videos[videos.size() - 1].fileName});
    return summary;
}

bool CopyJob::copy(const VideoFile& video, FileManager& fileManager, CopyRun& copies) const
{
    const Location target = targetOf(video);
    copies.completeCopiesTo(target);
    fileManager.createDirectory(target.deletingLastPathComponent());
    if (fileManager.fileExists(target))
        return false;
    copies.copyItem(sourceOf(video), target);
    return true;
}

/// Not for a video that will be skipped. Failures are ignored here: they occur again when the video is copied.
void CopyJob::readAhead(const VideoFile& video, const FileManager& fileManager, CopyRun& copies) const
{
    try {
        if (!fileManager.fileExists(targetOf(video)))
            copies.readAhead(sourceOf(video));
    } catch (const FileError&) {
    }
}

Location CopyJob::targetOf(const VideoFile& video) const
{
    return destinationRoot.appending(preserveFolderStructure ? video.relativePath : video.fileName);
}

} // namespace reelkeep
