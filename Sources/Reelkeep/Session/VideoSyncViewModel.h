#pragma once

#include "BackgroundTasks.h"
#include "FolderDialog.h"
#include "MainThread.h"
#include "VideoSyncModels.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace reelkeep {

class FileManager;

/// The session: the user's choices, the latest results and everything the window derives from them.
///
/// It lives on the interface thread; calling it from another is a programming error that stops the program. Every
/// write to a field, even of an equal value, first emits `objectWillChange` and then stores the value. Destroying it
/// while work is running is safe: the workers are told to stop, and what they still deliver is dropped.
class VideoSyncViewModel : public QObject {
    Q_OBJECT

public:
    explicit VideoSyncViewModel(FolderDialogFactory makeFolderDialog,
                                std::shared_ptr<FileManager> fileManager = nullptr, QObject* parent = nullptr);
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
    std::vector<Location> effectiveDestinationReviewFolders() const; ///< What is reviewed, the copy destination first.
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

    /// Only for the end of the program: tells the workers to stop and waits for them, but not for long. Unless a
    /// disk hangs, no partial file is left. No operation may follow.
    void stopWorkers();

signals:
    /// A field is about to be written; a slot that reads at once still sees the old value.
    void objectWillChange();

private:
    /// The published fields with the values of a new session.
    struct Fields {
        std::optional<Location> sourceFolder;
        std::optional<Location> copyDestinationFolder;
        std::vector<Location> destinationReviewFolders;
        VideoList sourceVideos;
        VideoList destinationVideos;
        VideoList missingVideos;
        bool preserveFolderStructure = true;
        bool isScanning = false;
        bool isCopying = false;
        double progressValue = 0.0;
        std::string statusMessage =
            "Selecciona la carpeta de la camara, el destino de copia y los HDs o carpetas a revisar.";
        std::optional<Date> lastScanDate;
    };
    /// What a worker returns: a result, or the text of the error that prevented it.
    template <typename Result>
    struct Outcome {
        std::optional<Result> result;
        std::string error;
    };
    using Continuation = std::function<void()>;

    /// For reading; checks the thread.
    const Fields& checkedFields() const;

    // These return false if a slot destroyed this session: its members must not be used then.
    bool announce();
    /// Announces, then stores.
    template <typename Value>
    bool write(Value& field, std::type_identity_t<Value> value)
    {
        if (!announce())
            return false;
        field = std::move(value);
        return true;
    }

    static std::vector<Location> uniqueFolders(const std::vector<Location>& folders);
    std::optional<Location> pickFolder(const char* title);
    std::vector<Location> pickFolders(const char* title);

    /// A scan that calls `afterwards`, whether it succeeds or fails.
    void beginScan(Continuation afterwards);
    void applyScan(Outcome<ScanSummary> outcome, const Continuation& afterwards);
    bool storeResults(const ScanSummary& found);
    void applyProgress(const CopyProgress& progress);
    void applyCopy(const Outcome<CopySummary>& outcome);
    void endCopy();
    template <typename Result, typename Work, typename Apply>
    void runInBackground(Work work, Apply apply);

    Fields fields;
    FolderDialogFactory makeFolderDialog;
    std::shared_ptr<FileManager> fileManager;
    MainThread mainThread{this};
    BackgroundTasks backgroundTasks;
};

} // namespace reelkeep
