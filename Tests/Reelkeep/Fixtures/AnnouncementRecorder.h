#pragma once

#include "VideoSyncViewModel.h"

#include <string>
#include <utility>
#include <vector>

namespace reelkeep {

/// All twelve fields of a session at one moment, by name, as texts that differ if the values do.
using Snapshot = std::vector<std::pair<std::string, std::string>>;
Snapshot snapshot(const VideoSyncViewModel& session);
/// The same without one field.
Snapshot snapshotWithout(const std::string& field, const VideoSyncViewModel& session);

/// Reads all twelve fields in the slot of every announcement, so it sees the values from before the write.
class AnnouncementRecorder {
public:
    explicit AnnouncementRecorder(const VideoSyncViewModel& session);

    /// One line for each announcement: what the write after it changed ("isScanning = true"), or "nothing" for the
    /// write of an equal value. The write after the last announcement must have happened.
    std::vector<std::string> writes() const;

    std::size_t count() const { return seen.size(); }

private:
    const VideoSyncViewModel& session;
    std::vector<Snapshot> seen;
    QObject connected; ///< Ends the connection together with this recorder.
};

} // namespace reelkeep
