#include "VideoSyncService.h"

#include "Platform/TextOrder.h"

#include <utility>
#include <vector>

namespace reelkeep {

namespace {

bool isVideo(std::string_view fileName)
{
    const auto dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return false;
    return VideoSyncService::supportedExtensions().count(lowercased(fileName.substr(dot + 1))) != 0;
}

/// Not a cut of the prefix: every occurrence goes, also one in the middle of the path.
SharedText removingOccurrences(const SharedText& text, std::string_view part)
{
    const std::string_view whole = text;
    const bool isPrefix = whole.substr(0, part.size()) == part;
    if (isPrefix && whole.find(part, part.size()) == std::string_view::npos)
        return text.from(part.size()); // Nearly always; shares the path's storage.
    std::string rest(whole);
    for (auto found = rest.find(part); found != std::string::npos; found = rest.find(part, found))
        rest.erase(found, part.size());
    return rest;
}

void appendVideos(VideoList::Records& videos, const Location& root, const FileManager& fileManager,
                  const std::stop_token& stop)
{
    const std::string rootPrefix = root.path() + "/";
    for (FileManager::Entry& entry : fileManager.regularFiles(root, isVideo, stop)) {
        VideoFile video;
        const SharedText& path = entry.url.sharedPath();
        video.relativePath = removingOccurrences(path, rootPrefix);
        video.id = video.relativePath;
        video.fileName = path.from(path.size() - entry.url.lastPathComponent().size());
        video.url = std::move(entry.url);
        video.size = entry.size;
        video.createdAt = entry.contentModificationDate;
        videos.push_back(std::move(video));
    }
}

} // namespace

const std::set<std::string, std::less<>>& VideoSyncService::supportedExtensions()
{
    static const std::set<std::string, std::less<>> extensions = {"avi",  "braw", "m4v", "mkv", "mov", "mp4",
                                                                  "mpeg", "mpg",  "mts", "mxf", "r3d", "wmv"};
    return extensions;
}

VideoList VideoSyncService::scanVideoFiles(const Location& root, const FileManager& fileManager,
                                           const std::stop_token& stop)
{
    return scanVideoFiles(std::vector<Location>{root}, fileManager, stop);
}

VideoList VideoSyncService::scanVideoFiles(const std::vector<Location>& roots, const FileManager& fileManager,
                                           const std::stop_token& stop)
{
    VideoList::Records videos;
    for (const Location& root : roots)
        appendVideos(videos, root, fileManager, stop);
    return videos;
}

} // namespace reelkeep
