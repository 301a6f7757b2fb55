#pragma once

#include "Platform/BackgroundTasks.h"
#include "Platform/FolderDialog.h"
#include "Platform/MainThread.h"
#include "VideoSyncModels.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace reelkeep {

class FileManager;

/// The session: the user's choices, the latest results and everything the window derives from them.
///
/// It lives on the interface thread; calling it from another is a programming error that stops the program. Every
/// write to a field, of an equal value too, first emits `objectWillChange` and then stores the value. Destroying it in
/// mid-run is safe: the workers are told to stop and what they still deliver is dropped.
class VideoSyncViewModel : public QObject {
    Q_OBJECT

public:
    explicit VideoSyncViewModel(FolderDialogFactory makeFolderDialog,
                                std::shared_ptr<const FileManager> fileManager = nullptr, QObject* parent = nullptr);
    ~VideoSyncViewModel() override;

    // The twelve published fields.
    const std::optional<Location>& sourceFolder() const;
    const std::optional<Location>& copyDestinationFolder() const;
    void setCopyDestinationFolder(std::optional<Location> folder);
    const std::vector<Location>& destinationReviewFolders() const;
    const VideoList& sourceVideos() const;
    const VideoList& destinationVideos() const;
    const VideoList& missingVideos() const;
    bool preserveFolderStructure() const;
    void setPreserveFolderStructure(bool preserve);
    bool isScanning() const;
    bool isCopying() const;
    double progressValue() const; ///< 0.0 to 1.0, in files, not bytes.
    const std::string& statusMessage() const;
    const std::optional<Date>& lastScanDate() const;

    // Derived values, computed at every call.
    std::vector<Location> effectiveDestinationReviewFolders() const; ///< What is reviewed: the copy destination first.
    std::string destinationReviewSummary() const;
    std::string copyDestinationSelectionPath() const;
    std::string activeCopyDestinationName() const;
    std::size_t cameraVideosAlreadyInDestinationCount() const;
    bool canScan() const;
    bool canCopy() const;

    // Folder selection; each returns once the user has closed the dialog. A cancelled dialog changes nothing.
    void chooseSourceFolder();
    void chooseCopyDestinationFolder();
    void addDestinationReviewFolders();
    void useOnlyCopyDestinationForReview();
    void removeDestinationReviewFolder(const Location& folder);

    // The workflows. Both return at once and report through the fields only.
    void scanFolders();
    void copyMissingVideos();

signals:
    /// A field is about to be written; a slot that reads at once still sees the old value.
    void objectWillChange();
};

} // namespace reelkeep
