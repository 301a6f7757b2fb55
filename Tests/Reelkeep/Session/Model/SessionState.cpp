#include "Model/SessionState.h"

#include <algorithm>
#include <sstream>

namespace reelkeep {

namespace {

std::optional<std::string> plain(const std::optional<Location>& folder)
{
    return folder ? std::optional(folder->path()) : std::nullopt;
}

std::vector<std::string> plain(const std::vector<Location>& folders)
{
    std::vector<std::string> paths;
    for (const Location& folder : folders)
        paths.push_back(folder.path());
    return paths;
}

std::vector<Video> plain(const VideoList& videos)
{
    std::vector<Video> plainVideos;
    for (const VideoFile& video : videos) {
        // Two fields repeat others, and one is always absent; a record that differs in them is equal to none.
        const bool isSound = video.id == video.relativePath && !video.createdAt;
        plainVideos.push_back({video.url.path(), video.relativePath, video.fileName, isSound ? video.size : -1});
    }
    return plainVideos;
}

std::string textOf(const std::vector<std::string>& texts)
{
    std::string joined = "[";
    for (const std::string& text : texts)
        joined += text + ",";
    return joined + "]";
}

std::string textOf(const std::vector<Video>& videos)
{
    std::vector<std::string> texts;
    for (const Video& video : videos)
        texts.push_back(video.url + " as " + video.relativePath + " of " + std::to_string(video.size));
    return textOf(texts);
}

} // namespace

SessionState SessionReader::read(const VideoSyncViewModel& session)
{
    if (session.lastScanDate() != lastDate) {
        lastDate = session.lastScanDate();
        ++dates;
    }
    return {.sourceFolder = plain(session.sourceFolder()),
            .copyDestinationFolder = plain(session.copyDestinationFolder()),
            .destinationReviewFolders = plain(session.destinationReviewFolders()),
            .sourceVideos = plain(session.sourceVideos()),
            .destinationVideos = plain(session.destinationVideos()),
            .missingVideos = plain(session.missingVideos()),
            .preserveFolderStructure = session.preserveFolderStructure(),
            .isScanning = session.isScanning(),
            .isCopying = session.isCopying(),
            .progressValue = session.progressValue(),
            .statusMessage = session.statusMessage(),
            .scanDates = dates};
}

DerivedValues derivedValuesOf(const VideoSyncViewModel& session)
{
    return {.effectiveDestinationReviewFolders = plain(session.effectiveDestinationReviewFolders()),
            .destinationReviewSummary = session.destinationReviewSummary(),
            .copyDestinationSelectionPath = session.copyDestinationSelectionPath(),
            .activeCopyDestinationName = session.activeCopyDestinationName(),
            .cameraVideosAlreadyInDestinationCount = session.cameraVideosAlreadyInDestinationCount(),
            .canScan = session.canScan(),
            .canCopy = session.canCopy()};
}

DerivedValues derivedValuesOf(const SessionState& state)
{
    DerivedValues values;
    std::vector<std::string>& effective = values.effectiveDestinationReviewFolders;
    if (state.copyDestinationFolder)
        effective.push_back(*state.copyDestinationFolder);
    for (const std::string& folder : state.destinationReviewFolders) {
        if (std::find(effective.begin(), effective.end(), folder) == effective.end())
            effective.push_back(folder);
    }

    if (effective.empty())
        values.destinationReviewSummary = "Sin seleccionar";
    else if (effective.size() == 1)
        values.destinationReviewSummary = effective[0];
    else
        values.destinationReviewSummary = std::to_string(effective.size()) + " ubicaciones seleccionadas";

    values.activeCopyDestinationName = "Sin seleccionar";
    if (state.copyDestinationFolder) {
        const std::string& path = *state.copyDestinationFolder;
        values.copyDestinationSelectionPath = path;
        values.activeCopyDestinationName = path == "/" ? path : path.substr(path.find_last_of('/') + 1);
    }

    const std::size_t found = state.sourceVideos.size();
    const std::size_t missing = state.missingVideos.size();
    values.cameraVideosAlreadyInDestinationCount = found > missing ? found - missing : 0;

    const bool isIdle = !state.isScanning && !state.isCopying;
    const bool isChosen = state.sourceFolder.has_value() && state.copyDestinationFolder.has_value();
    values.canScan = isIdle && isChosen;
    values.canCopy = isIdle && isChosen && missing > 0;
    return values;
}

std::string textOf(const SessionState& state)
{
    std::ostringstream text;
    text << "  source " << state.sourceFolder.value_or("-") << ", destination "
         << state.copyDestinationFolder.value_or("-") << ", review " << textOf(state.destinationReviewFolders)
         << "\n  source videos " << textOf(state.sourceVideos) << "\n  destination videos "
         << textOf(state.destinationVideos) << "\n  missing videos " << textOf(state.missingVideos) << "\n  structure "
         << state.preserveFolderStructure << ", scanning " << state.isScanning << ", copying " << state.isCopying
         << ", progress " << state.progressValue << ", dates " << state.scanDates << "\n  " << state.statusMessage
         << "\n";
    return text.str();
}

std::string textOf(const DerivedValues& values)
{
    std::ostringstream text;
    text << "  effective " << textOf(values.effectiveDestinationReviewFolders) << ", summary "
         << values.destinationReviewSummary << ", path " << values.copyDestinationSelectionPath << ", name "
         << values.activeCopyDestinationName << ", already there " << values.cameraVideosAlreadyInDestinationCount
         << ", can scan " << values.canScan << ", can copy " << values.canCopy << "\n";
    return text.str();
}

} // namespace reelkeep
