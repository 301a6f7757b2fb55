#pragma once

#include "VideoSyncViewModel.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace reelkeep {

/// A record as it comes from files in memory: texts and a number.
struct Video {
    std::string url;
    std::string relativePath;
    std::string fileName;
    std::int64_t size = 0;

    bool operator==(const Video&) const = default;
};

/// The twelve fields of a session in plain types, as a new session has them.
struct SessionState {
    std::optional<std::string> sourceFolder;
    std::optional<std::string> copyDestinationFolder;
    std::vector<std::string> destinationReviewFolders;
    std::vector<Video> sourceVideos;
    std::vector<Video> destinationVideos;
    std::vector<Video> missingVideos;
    bool preserveFolderStructure = true;
    bool isScanning = false;
    bool isCopying = false;
    double progressValue = 0.0;
    std::string statusMessage =
        "Selecciona la carpeta de la camara, el destino de copia y los HDs o carpetas a revisar.";
    int scanDates = 0; ///< How many values `lastScanDate` has had.

    bool operator==(const SessionState&) const = default;
};

/// Reads the fields of one session again and again, and counts the dates that it sees.
class SessionReader {
public:
    SessionState read(const VideoSyncViewModel& session);

private:
    std::optional<Date> lastDate;
    int dates = 0;
};

/// What the session derives from its fields, in plain types.
struct DerivedValues {
    std::vector<std::string> effectiveDestinationReviewFolders;
    std::string destinationReviewSummary;
    std::string copyDestinationSelectionPath;
    std::string activeCopyDestinationName;
    std::size_t cameraVideosAlreadyInDestinationCount = 0;
    bool canScan = false;
    bool canCopy = false;

    bool operator==(const DerivedValues&) const = default;
};

DerivedValues derivedValuesOf(const VideoSyncViewModel& session);
/// Derived by the rules.
DerivedValues derivedValuesOf(const SessionState& state);

/// For the message of a failed comparison.
std::string textOf(const SessionState& state);
std::string textOf(const DerivedValues& values);

} // namespace reelkeep
