#include "VideoSyncViewModel.h"

#include <QPointer>

#include <algorithm>
#include <iterator>

namespace reelkeep {

namespace {

std::unique_ptr<FolderDialog> folderDialog(const FolderDialogFactory& make, const char* title, bool several)
{
    std::unique_ptr<FolderDialog> dialog = make();
    dialog->title = title;
    dialog->canChooseDirectories = true;
    dialog->canChooseFiles = false;
    dialog->allowsMultipleSelection = several;
    return dialog;
}

} // namespace

// While a dialog is open events are processed, and one of them may destroy this session: then nothing was chosen.

std::optional<Location> VideoSyncViewModel::pickFolder(const char* title)
{
    MainThread::checkIsCurrent();
    const QPointer<VideoSyncViewModel> session(this);
    const std::unique_ptr<FolderDialog> dialog = folderDialog(makeFolderDialog, title, false);
    if (dialog->runModal() != FolderDialog::Response::ok || !session)
        return std::nullopt;
    return dialog->URL();
}

std::vector<Location> VideoSyncViewModel::pickFolders(const char* title)
{
    MainThread::checkIsCurrent();
    const QPointer<VideoSyncViewModel> session(this);
    const std::unique_ptr<FolderDialog> dialog = folderDialog(makeFolderDialog, title, true);
    if (dialog->runModal() != FolderDialog::Response::ok || !session)
        return {};
    return dialog->URLs();
}

void VideoSyncViewModel::chooseSourceFolder()
{
    const std::optional<Location> folder = pickFolder("Selecciona la carpeta de origen");
    if (folder)
        write(fields.sourceFolder, folder);
}

void VideoSyncViewModel::chooseCopyDestinationFolder()
{
    const std::optional<Location> folder = pickFolder("Selecciona la carpeta de destino");
    if (folder && write(fields.copyDestinationFolder, folder) && fields.destinationReviewFolders.empty())
        write(fields.destinationReviewFolders, {*folder});
}

void VideoSyncViewModel::addDestinationReviewFolders()
{
    const std::vector<Location> chosen = pickFolders("Selecciona uno o varios HDs o carpetas a revisar");
    if (chosen.empty())
        return;
    // The chosen ones are compared with the list as it was, not with each other.
    const std::vector<Location>& present = fields.destinationReviewFolders;
    std::vector<Location> extended = present;
    std::copy_if(chosen.begin(), chosen.end(), std::back_inserter(extended), [&](const Location& folder) {
        return std::find(present.begin(), present.end(), folder) == present.end();
    });
    write(fields.destinationReviewFolders, std::move(extended));
}

void VideoSyncViewModel::useOnlyCopyDestinationForReview()
{
    if (copyDestinationFolder())
        write(fields.destinationReviewFolders, {*fields.copyDestinationFolder});
}

void VideoSyncViewModel::removeDestinationReviewFolder(const Location& folder)
{
    std::vector<Location> remaining;
    std::copy_if(destinationReviewFolders().begin(), destinationReviewFolders().end(), std::back_inserter(remaining),
                 [&](const Location& present) { return present != folder; });
    write(fields.destinationReviewFolders, std::move(remaining));
}

} // namespace reelkeep
