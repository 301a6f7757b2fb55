#include "VideoSyncViewModel.h"

#include "Files/LinuxFileManager.h"

#include <QPointer>

#include <algorithm>
#include <string_view>
#include <unordered_set>

namespace reelkeep {

VideoSyncViewModel::VideoSyncViewModel(FolderDialogFactory folderDialogFactory, std::shared_ptr<FileManager> files,
                                       QObject* parent)
    : QObject(parent), makeFolderDialog(std::move(folderDialogFactory)),
      fileManager(files ? std::move(files) : std::make_shared<LinuxFileManager>())
{
}

VideoSyncViewModel::~VideoSyncViewModel()
{
    MainThread::checkIsCurrent();
}

void VideoSyncViewModel::stopWorkers()
{
    MainThread::checkIsCurrent();
    backgroundTasks.stop();
}

const VideoSyncViewModel::Fields& VideoSyncViewModel::checkedFields() const
{
    MainThread::checkIsCurrent();
    return fields;
}

bool VideoSyncViewModel::announce()
{
    MainThread::checkIsCurrent();
    const QPointer<VideoSyncViewModel> session(this);
    emit objectWillChange();
    return session;
}

const std::optional<Location>& VideoSyncViewModel::sourceFolder() const
{
    return checkedFields().sourceFolder;
}

const std::optional<Location>& VideoSyncViewModel::copyDestinationFolder() const
{
    return checkedFields().copyDestinationFolder;
}

void VideoSyncViewModel::setCopyDestinationFolder(std::optional<Location> folder)
{
    write(fields.copyDestinationFolder, std::move(folder));
}

const std::vector<Location>& VideoSyncViewModel::destinationReviewFolders() const
{
    return checkedFields().destinationReviewFolders;
}

const VideoList& VideoSyncViewModel::sourceVideos() const
{
    return checkedFields().sourceVideos;
}

const VideoList& VideoSyncViewModel::destinationVideos() const
{
    return checkedFields().destinationVideos;
}

const VideoList& VideoSyncViewModel::missingVideos() const
{
    return checkedFields().missingVideos;
}

bool VideoSyncViewModel::preserveFolderStructure() const
{
    return checkedFields().preserveFolderStructure;
}

void VideoSyncViewModel::setPreserveFolderStructure(bool preserve)
{
    write(fields.preserveFolderStructure, preserve);
}

bool VideoSyncViewModel::isScanning() const
{
    return checkedFields().isScanning;
}

bool VideoSyncViewModel::isCopying() const
{
    return checkedFields().isCopying;
}

double VideoSyncViewModel::progressValue() const
{
    return checkedFields().progressValue;
}

const std::string& VideoSyncViewModel::statusMessage() const
{
    return checkedFields().statusMessage;
}

const std::optional<Date>& VideoSyncViewModel::lastScanDate() const
{
    return checkedFields().lastScanDate;
}

std::vector<Location> VideoSyncViewModel::uniqueFolders(const std::vector<Location>& folders)
{
    std::vector<Location> unique;
    std::unordered_set<std::string_view> paths;
    for (const Location& folder : folders) {
        if (paths.insert(folder.sharedPath()).second)
            unique.push_back(folder);
    }
    return unique;
}

std::vector<Location> VideoSyncViewModel::effectiveDestinationReviewFolders() const
{
    std::vector<Location> folders;
    if (copyDestinationFolder())
        folders.push_back(*copyDestinationFolder());
    folders.insert(folders.end(), destinationReviewFolders().begin(), destinationReviewFolders().end());
    return uniqueFolders(folders);
}

std::string VideoSyncViewModel::destinationReviewSummary() const
{
    const std::vector<Location> folders = effectiveDestinationReviewFolders();
    if (folders.empty())
        return "Sin seleccionar";
    if (folders.size() == 1)
        return folders.front().path();
    return std::to_string(folders.size()) + " ubicaciones seleccionadas";
}

std::string VideoSyncViewModel::copyDestinationSelectionPath() const
{
    return copyDestinationFolder() ? copyDestinationFolder()->path() : std::string();
}

std::string VideoSyncViewModel::activeCopyDestinationName() const
{
    if (!copyDestinationFolder())
        return "Sin seleccionar";
    return std::string(copyDestinationFolder()->name());
}

std::size_t VideoSyncViewModel::cameraVideosAlreadyInDestinationCount() const
{
    return sourceVideos().size() - std::min(sourceVideos().size(), missingVideos().size());
}

bool VideoSyncViewModel::canScan() const
{
    // The last condition follows from the one before; it is kept so that the rule reads like the guards of the scan.
    return !isScanning() && !isCopying() && sourceFolder() && copyDestinationFolder() &&
           !effectiveDestinationReviewFolders().empty();
}

bool VideoSyncViewModel::canCopy() const
{
    return !isScanning() && !isCopying() && !missingVideos().empty() && sourceFolder() && copyDestinationFolder();
}

} // namespace reelkeep
