#pragma once

#include "Files/FileManager.h"
#include "VideoSyncModels.h"

#include <set>
#include <string>
#include <string_view>

namespace reelkeep {

/// Finds videos on disk and tells which of them are missing. It holds no state; any thread may call it.
struct VideoSyncService {
    /// The twelve known extensions, lower case, without dots.
    static const std::set<std::string, std::less<>>& supportedExtensions();

    /// One record per video below `root`, in walk order. Nothing for a root that is missing or cannot be listed.
    /// Throws what the file manager throws.
    static VideoList scanVideoFiles(const Location& root, const FileManager& fileManager,
                                    const std::stop_token& stop = {});
    /// The same for each root, joined in their order; the same file reached through two roots is listed twice. The
    /// first root's error that fails counts. Roots on different disks are scanned at the same time.
    static VideoList scanVideoFiles(const std::vector<Location>& roots, const FileManager& fileManager,
                                    const std::stop_token& stop = {});

    /// Scans `source` and `reviewed` as above, all at the same time where their disks allow it, and compares them.
    static ScanSummary analyse(const Location& source, const std::vector<Location>& reviewed,
                               const FileManager& fileManager, const std::stop_token& stop = {});

    /// The `source` records whose name (whatever its letter case) and size no `reviewed` record has, in file-browser
    /// order. Folder, date and content are not compared.
    static VideoList missingVideos(const VideoList& source, const VideoList& reviewed);

    /// What two records must share to be the same video: lower-cased name, "::", size.
    static std::string matchKey(const VideoFile& video);
};

} // namespace reelkeep
