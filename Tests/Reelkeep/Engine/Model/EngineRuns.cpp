#include "Model/EngineRuns.h"

#include "Files/FileError.h"
#include "Fixtures/RealFiles.h"

#include "CopyJob.h"

#include <stdexcept>

namespace reelkeep {

std::vector<std::string> placesOf(const std::vector<std::string>& relative, const FileTree& tree)
{
    std::vector<std::string> places;
    for (const std::string& root : relative)
        places.push_back(tree.path(root));
    return places;
}

VideoList scan(const std::vector<std::string>& places)
{
    return VideoSyncService::scanVideoFiles(std::vector<Location>(places.begin(), places.end()), LinuxFileManager());
}

std::vector<naive::Video> plain(const VideoList& videos)
{
    std::vector<naive::Video> result;
    for (const VideoFile& video : videos) {
        if (video.id != video.relativePath || !video.createdAt)
            throw std::logic_error("a record that no scan makes");
        result.push_back({video.url.path(), video.relativePath, video.fileName, video.size,
                          video.createdAt->time_since_epoch().count()});
    }
    return result;
}

std::string textOf(const std::vector<naive::Video>& videos)
{
    std::string text;
    for (const naive::Video& video : videos)
        text += video.url + " = " + video.relativePath + ", " + video.fileName + ", " + std::to_string(video.size) +
                " bytes, " + std::to_string(video.modified) + "\n";
    return text;
}

EngineCopy copy(const VideoList& videos, const std::string& source, const std::string& destination,
                bool preservesStructure)
{
    EngineCopy result;
    const CopyJob job = {.videos = videos,
                         .sourceRoot = Location(source),
                         .destinationRoot = Location(destination),
                         .preserveFolderStructure = preservesStructure};
    try {
        result.summary = runOnRealFiles(job, [&](const CopyProgress& progress) {
            result.reports.push_back(std::to_string(progress.completedCount) + "/" +
                                     std::to_string(progress.totalCount) + " " + progress.currentFileName);
        });
    } catch (const FileError&) {
        result.failed = true;
    }
    return result;
}

} // namespace reelkeep
