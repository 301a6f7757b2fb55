#include "CopyJob.h"
#include "Files/FileManager.h"
#include "Files/Stopped.h"
#include "VideoSyncService.h"
#include "VideoSyncViewModel.h"

#include <chrono>
#include <new>
#include <system_error>

namespace reelkeep {

namespace {

std::string verdict(std::size_t missingCount)
{
    if (missingCount == 0)
        return "Todo lo de la camara ya esta guardado en las ubicaciones revisadas. Los videos extra se ignoran.";
    return "He encontrado " + std::to_string(missingCount) +
           " videos de la camara que aun no estan en ninguna de las ubicaciones revisadas.";
}

std::string progressText(const CopyProgress& progress)
{
    if (progress.totalCount == 0)
        return "No hay trabajo pendiente.";
    return "Copiando " + std::to_string(progress.completedCount) + "/" + std::to_string(progress.totalCount) + ": " +
           progress.currentFileName;
}

} // namespace

/// `work` runs on a worker and must not touch the session; its outcome reaches `apply` on the interface thread, if the
/// session still exists. Stopped work has no outcome: only the end of the session stops it.
template <typename Result, typename Work, typename Apply>
void VideoSyncViewModel::runInBackground(Work work, Apply apply)
{
    const auto deliver = [mailbox = mainThread, apply](Outcome<Result> outcome) {
        mailbox.post([apply, outcome = std::move(outcome)]() mutable { apply(std::move(outcome)); });
    };
    try {
        backgroundTasks.run([work = std::move(work), deliver](const std::stop_token& stop) {
            try {
                deliver({.result = work(stop), .error = {}});
            } catch (const Stopped&) {
            } catch (const std::bad_alloc&) {
                deliver({.result = {}, .error = "No queda memoria."});
            } catch (const std::exception& error) {
                deliver({.result = {}, .error = error.what()});
            }
        });
    } catch (const std::system_error&) {
        deliver({.result = {},
                 .error = "No quedan hilos para empezar el trabajo. Cierra otros programas y vuelve a intentarlo."});
    }
}

void VideoSyncViewModel::scanFolders()
{
    beginScan([] {});
}

void VideoSyncViewModel::beginScan(Continuation afterwards)
{
    const std::optional<Location> source = sourceFolder();
    const std::vector<Location> reviewed = effectiveDestinationReviewFolders();
    std::optional<VideoSyncError> obstacle;
    if (!source)
        obstacle = VideoSyncError::sourceFolderMissing;
    else if (!copyDestinationFolder())
        obstacle = VideoSyncError::destinationFolderMissing;
    else if (reviewed.empty())
        obstacle = VideoSyncError::destinationReviewFoldersMissing;
    if (obstacle) {
        if (write(fields.statusMessage, errorDescription(*obstacle)))
            afterwards();
        return;
    }

    if (!write(fields.isScanning, true) || !write(fields.statusMessage, "Escaneando videos..."))
        return;
    runInBackground<ScanSummary>(
        [source = *source, reviewed, files = fileManager](const std::stop_token& stop) {
            return VideoSyncService::analyse(source, reviewed, *files, stop);
        },
        [this, afterwards = std::move(afterwards)](Outcome<ScanSummary> outcome) {
            applyScan(std::move(outcome), afterwards);
        });
}

void VideoSyncViewModel::applyScan(Outcome<ScanSummary> outcome, const Continuation& afterwards)
{
    const bool written =
        outcome.result ? storeResults(*outcome.result)
                       : write(fields.statusMessage, "No he podido escanear las carpetas: " + std::move(outcome.error));
    if (written && write(fields.isScanning, false))
        afterwards();
}

bool VideoSyncViewModel::storeResults(const ScanSummary& found)
{
    const std::size_t missingCount = found.missingVideos.size();
    if (!write(fields.sourceVideos, found.sourceVideos) || !write(fields.destinationVideos, found.destinationVideos) ||
        !write(fields.missingVideos, found.missingVideos))
        return false;
    return write(fields.lastScanDate, Date(std::chrono::system_clock::now())) &&
           write(fields.statusMessage, verdict(missingCount));
}

void VideoSyncViewModel::copyMissingVideos()
{
    const std::optional<Location> source = sourceFolder();
    const std::optional<Location> destination = copyDestinationFolder();
    std::string obstacle;
    if (!source)
        obstacle = errorDescription(VideoSyncError::sourceFolderMissing);
    else if (!destination)
        obstacle = errorDescription(VideoSyncError::destinationFolderMissing);
    else if (fields.missingVideos.empty())
        obstacle = "No hay videos pendientes para copiar.";
    if (!obstacle.empty()) {
        write(fields.statusMessage, std::move(obstacle));
        return;
    }

    if (!write(fields.isCopying, true) || !write(fields.progressValue, 0.0) ||
        !write(fields.statusMessage, "Copiando al HD solo los videos que faltan de la camara..."))
        return;
    const CopyJob job = {.videos = fields.missingVideos,
                         .sourceRoot = *source,
                         .destinationRoot = *destination,
                         .preserveFolderStructure = fields.preserveFolderStructure};
    const auto report = [this, mailbox = mainThread](const CopyProgress& progress) {
        mailbox.post([this, progress] { applyProgress(progress); });
    };
    runInBackground<CopySummary>(
        [job, report, files = fileManager](const std::stop_token& stop) { return job.run(*files, report, stop); },
        [this](const Outcome<CopySummary>& outcome) { applyCopy(outcome); });
}

void VideoSyncViewModel::applyProgress(const CopyProgress& progress)
{
    const double fraction = progress.totalCount >= 1 ? static_cast<double>(progress.completedCount) /
                                                           static_cast<double>(progress.totalCount)
                                                     : 0.0;
    if (write(fields.progressValue, fraction))
        write(fields.statusMessage, progressText(progress));
}

void VideoSyncViewModel::applyCopy(const Outcome<CopySummary>& outcome)
{
    if (!outcome.result) {
        if (write(fields.statusMessage, "No he podido copiar los videos: " + outcome.error))
            endCopy();
        return;
    }
    const CopySummary& summary = *outcome.result;
    if (write(fields.statusMessage, "Copia completada. " + std::to_string(summary.copiedCount) +
                                        " videos de la camara copiados al HD, " + std::to_string(summary.skippedCount) +
                                        " omitidos."))
        beginScan([this] { endCopy(); });
}

void VideoSyncViewModel::endCopy()
{
    if (write(fields.isCopying, false))
        write(fields.progressValue, 0.0);
}

} // namespace reelkeep
