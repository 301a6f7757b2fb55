#pragma once

#include "Files/FileManager.h"
#include "VideoSyncModels.h"

#include <set>
#include <string>
#include <string_view>

namespace reelkeep {

/// Finds videos on disk and determines which of them are missing. Stateless; any thread may call it.
struct VideoSyncService {
    /// The twelve known extensions, lower case, without dots.
    static const std::set<std::string, std::less<>>& supportedExtensions();

    /// One record per video below `root`, in walk order; none if the root is missing or must not be listed.
    /// Throws what the file manager throws.
    static VideoList scanVideoFiles(const Location& root, const FileManager& fileManager,
                                    const std::stop_token& stop = {});
    /// The same for several roots, joined in their order; a file below two of them is listed twice. Roots on different
    /// disks are scanned at the same time. If several fail, the error of the first in order is thrown.
    static VideoList scanVideoFiles(const std::vector<Location>& roots, const FileManager& fileManager,
                                    const std::stop_token& stop = {});

    /// Scans `source` and `reviewed` as above, in one go, and compares them.
    static ScanSummary analyse(const Location& source, const std::vector<Location>& reviewed,
                               const FileManager& fileManager, const std::stop_token& stop = {});

    /// The `source` records for which no `reviewed` record has the same name (ignoring letter case) and size, in
    /// file-browser order. Folder, date and content are not compared.
    static VideoList missingVideos(const VideoList& source, const VideoList& reviewed);

    /// The text by which two records are the same video: lower-cased name, "::", size.
    static std::string matchKey(const VideoFile& video);
};

} // namespace reelkeep
