#include "VideoSyncService.h"

#include "Text/TextOrder.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <map>
#include <system_error>
#include <thread>
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

/// Removes every occurrence, not only the prefix.
SharedText removingOccurrences(const SharedText& text, std::string_view part)
{
    const std::string_view whole = text;
    const bool isPrefix = whole.substr(0, part.size()) == part;
    if (isPrefix && whole.find(part, part.size()) == std::string_view::npos)
        return text.from(part.size()); // The usual case, which allocates nothing.
    std::string rest(whole);
    for (auto found = rest.find(part); found != std::string::npos; found = rest.find(part, found))
        rest.erase(found, part.size());
    return rest;
}

VideoList::Records scanRoot(const Location& root, const FileManager& fileManager, const std::stop_token& stop)
{
    const std::string rootPrefix = root.path() + "/";
    VideoList::Records videos;
    const auto add = [&](FileManager::Entry entry) {
        VideoFile& video = videos.emplace_back();
        const SharedText& path = entry.url.sharedPath();
        video.relativePath = removingOccurrences(path, rootPrefix);
        video.id = video.relativePath;
        video.fileName = path.from(path.size() - entry.url.lastPathComponent().size());
        video.url = std::move(entry.url);
        video.size = entry.size;
        video.createdAt = entry.contentModificationDate;
    };
    fileManager.regularFiles(root, isVideo, add, stop);
    return videos;
}

/// The outcome for one of several roots.
struct RootScan {
    VideoList::Records videos;
    std::exception_ptr failure;
    std::stop_source stop;
};

/// Scans roots on different disks at the same time and those on one disk one after the other. The outcome is that of
/// scanning all in order: the lists, or the error of the first root that fails.
std::vector<VideoList::Records> scanRoots(const std::vector<Location>& roots, const FileManager& fileManager,
                                          const std::stop_token& stop)
{
    std::vector<RootScan> scans(roots.size());
    const auto stopFrom = [&scans](std::size_t first) {
        for (std::size_t i = first; i < scans.size(); ++i)
            scans[i].stop.request_stop();
    };
    const std::stop_callback stopAll(stop, [&] { stopFrom(0); });
    const auto scanInTurn = [&](const std::vector<std::size_t>& turns) {
        for (const std::size_t i : turns) {
            try {
                scans[i].videos = scanRoot(roots[i], fileManager, scans[i].stop.get_token());
            } catch (...) {
                scans[i].failure = std::current_exception();
                stopFrom(i + 1); // Their outcomes no longer count.
                return;
            }
        }
    };

    std::map<std::string, std::vector<std::size_t>> turnsOfDisks;
    for (std::size_t i = 0; i < roots.size(); ++i)
        turnsOfDisks[fileManager.diskHolding(roots[i]).id].push_back(i);
    {
        std::vector<std::jthread> others;
        std::vector<std::size_t> own; // Roots of one disk, or of several for which no thread is left.
        for (const auto& disk : turnsOfDisks) {
            try {
                if (own.empty())
                    own = disk.second;
                else
                    others.emplace_back(scanInTurn, std::cref(disk.second));
            } catch (const std::system_error&) {
                own.insert(own.end(), disk.second.begin(), disk.second.end());
            }
        }
        std::sort(own.begin(), own.end());
        scanInTurn(own);
    }
    std::vector<VideoList::Records> lists;
    for (RootScan& scan : scans) {
        if (scan.failure)
            std::rethrow_exception(scan.failure);
        lists.push_back(std::move(scan.videos));
    }
    return lists;
}

/// Moves all records into the first list, freeing the others on the way: there is no room for them twice.
VideoList joined(std::vector<VideoList::Records> lists)
{
    VideoList::Records all;
    for (VideoList::Records& list : lists) {
        if (all.empty())
            all.swap(list);
        for (; !list.empty(); list.pop_front())
            all.push_back(std::move(list.front()));
    }
    return all;
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
    return scanRoot(root, fileManager, stop);
}

VideoList VideoSyncService::scanVideoFiles(const std::vector<Location>& roots, const FileManager& fileManager,
                                           const std::stop_token& stop)
{
    return joined(scanRoots(roots, fileManager, stop));
}

ScanSummary VideoSyncService::analyse(const Location& source, const std::vector<Location>& reviewed,
                                      const FileManager& fileManager, const std::stop_token& stop)
{
    std::vector<Location> roots = {source};
    roots.insert(roots.end(), reviewed.begin(), reviewed.end());
    std::vector<VideoList::Records> lists = scanRoots(roots, fileManager, stop);
    ScanSummary found;
    found.sourceVideos = std::move(lists.front());
    lists.erase(lists.begin());
    found.destinationVideos = joined(std::move(lists));
    found.missingVideos = missingVideos(found.sourceVideos, found.destinationVideos);
    found.scannedDestinationRoots = reviewed;
    return found;
}

} // namespace reelkeep
