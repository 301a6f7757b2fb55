#include "Fixtures/AnnouncementRecorder.h"

#include <algorithm>

namespace reelkeep {

namespace {

std::string text(bool value)
{
    return value ? "true" : "false";
}

std::string text(const std::optional<Location>& folder)
{
    return folder ? folder->path() : "absent";
}

std::string text(const std::vector<Location>& folders)
{
    std::string paths = "[";
    for (const Location& folder : folders)
        paths += (paths.size() > 1 ? ", " : "") + folder.path();
    return paths + "]";
}

std::string text(const VideoList& videos)
{
    std::string paths = "[";
    for (const VideoFile& video : videos)
        paths += (paths.size() > 1 ? ", " : "") + video.relativePath;
    return paths + "]";
}

std::string text(double value)
{
    return std::to_string(value).substr(0, 4);
}

std::string text(const std::optional<Date>& date)
{
    return date ? std::to_string(date->time_since_epoch().count()) : "absent";
}

} // namespace

Snapshot snapshot(const VideoSyncViewModel& session)
{
    return {{"sourceFolder", text(session.sourceFolder())},
            {"copyDestinationFolder", text(session.copyDestinationFolder())},
            {"destinationReviewFolders", text(session.destinationReviewFolders())},
            {"sourceVideos", text(session.sourceVideos())},
            {"destinationVideos", text(session.destinationVideos())},
            {"missingVideos", text(session.missingVideos())},
            {"preserveFolderStructure", text(session.preserveFolderStructure())},
            {"isScanning", text(session.isScanning())},
            {"isCopying", text(session.isCopying())},
            {"progressValue", text(session.progressValue())},
            {"statusMessage", session.statusMessage()},
            {"lastScanDate", text(session.lastScanDate())}};
}

Snapshot snapshotWithout(const std::string& field, const VideoSyncViewModel& session)
{
    Snapshot fields = snapshot(session);
    fields.erase(std::remove_if(fields.begin(), fields.end(), [&](const auto& value) { return value.first == field; }),
                 fields.end());
    return fields;
}

AnnouncementRecorder::AnnouncementRecorder(const VideoSyncViewModel& watched) : session(watched)
{
    QObject::connect(
        &session, &VideoSyncViewModel::objectWillChange, &connected, [this] { seen.push_back(snapshot(session)); },
        Qt::DirectConnection);
}

std::vector<std::string> AnnouncementRecorder::writes() const
{
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const Snapshot after = i + 1 < seen.size() ? seen[i + 1] : snapshot(session);
        std::string line;
        for (std::size_t field = 0; field < after.size(); ++field) {
            if (after[field] == seen[i][field])
                continue;
            // The date differs in every run; only that there is a new one matters.
            const std::string value = after[field].first == "lastScanDate" ? "now" : after[field].second;
            line += (line.empty() ? "" : " and ") + after[field].first + " = " + value;
        }
        lines.push_back(line.empty() ? "nothing" : line);
    }
    return lines;
}

} // namespace reelkeep
