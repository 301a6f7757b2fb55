#include "VideoSyncService.h"

#include "Platform/TextOrder.h"

#include <algorithm>
#include <unordered_set>
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
std::string removingOccurrences(std::string text, const std::string& part)
{
    for (auto found = text.find(part); found != std::string::npos; found = text.find(part, found))
        text.erase(found, part.size());
    return text;
}

void appendVideos(std::vector<VideoFile>& videos, const Location& root, const FileManager& fileManager,
                  const std::stop_token& stop)
{
    const std::string rootPrefix = root.path() + "/";
    for (FileManager::Entry& entry : fileManager.regularFiles(root, isVideo, stop)) {
        VideoFile video;
        video.relativePath = removingOccurrences(entry.url.path(), rootPrefix);
        video.id = video.relativePath;
        video.fileName = entry.url.lastPathComponent();
        video.url = std::move(entry.url);
        video.size = entry.size;
        video.createdAt = entry.contentModificationDate;
        videos.push_back(std::move(video));
    }
}

/// By name, and records of exactly the same name by relative path; whatever is equal in both keeps its order.
std::vector<VideoFile> inFileBrowserOrder(const std::vector<const VideoFile*>& videos)
{
    struct Keyed {
        std::string key;
        const VideoFile* video;
    };
    const FileBrowserOrder order(collationLocale());
    std::vector<Keyed> sorted;
    sorted.reserve(videos.size());
    for (const VideoFile* video : videos) {
        // Neither key of a name holds a zero byte after the name itself, so a zero byte may part name from path.
        sorted.push_back({order.sortKey(video->fileName) + '\0' + order.sortKey(video->relativePath), video});
    }
    std::stable_sort(sorted.begin(), sorted.end(), [](const Keyed& a, const Keyed& b) { return a.key < b.key; });

    std::vector<VideoFile> result;
    result.reserve(sorted.size());
    for (const Keyed& keyed : sorted)
        result.push_back(*keyed.video);
    return result;
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
    std::vector<VideoFile> videos;
    for (const Location& root : roots)
        appendVideos(videos, root, fileManager, stop);
    return videos;
}

VideoList VideoSyncService::missingVideos(const VideoList& source, const VideoList& reviewed)
{
    std::unordered_set<std::string> reviewedKeys;
    reviewedKeys.reserve(reviewed.size());
    for (const VideoFile& video : reviewed)
        reviewedKeys.insert(matchKey(video));

    std::vector<const VideoFile*> missing;
    for (const VideoFile& video : source) {
        if (reviewedKeys.count(matchKey(video)) == 0)
            missing.push_back(&video);
    }
    return inFileBrowserOrder(missing);
}

std::string VideoSyncService::matchKey(const VideoFile& video)
{
    return foldedName(video.fileName) + "::" + std::to_string(video.size);
}

} // namespace reelkeep
