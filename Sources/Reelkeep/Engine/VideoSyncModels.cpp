#include "VideoSyncModels.h"

#include <cstdlib>
#include <system_error>
#include <thread>
#include <utility>

namespace reelkeep {

namespace {

/// Freeing a million records takes several frames, and the last owner of a list may be the interface thread: a long
/// list is freed on a thread of its own.
void destroyRecords(const VideoList::Records* videos)
{
    constexpr std::size_t quicklyFreed = 10'000;
    if (videos->size() > quicklyFreed) {
        try {
            std::thread([videos] { delete videos; }).detach();
            return;
        } catch (const std::system_error&) { // No thread left: it is freed here.
        }
    }
    delete videos;
}

} // namespace

VideoList::VideoList(Records videos) : records(new Records(std::move(videos)), destroyRecords) {}

std::string errorDescription(VideoSyncError error)
{
    switch (error) {
    case VideoSyncError::sourceFolderMissing:
        return "Selecciona primero la carpeta de origen.";
    case VideoSyncError::destinationFolderMissing:
        return "Selecciona primero el HD o carpeta donde quieres copiar.";
    case VideoSyncError::destinationReviewFoldersMissing:
        return "Selecciona al menos una ubicacion para revisar.";
    }
    std::abort();
}

namespace {

void combine(std::size_t& seed, std::size_t value)
{
    seed ^= value + 0x9e3779b97f4a7c15U + (seed << 6U) + (seed >> 2U);
}

} // namespace

} // namespace reelkeep

std::size_t std::hash<reelkeep::VideoFile>::operator()(const reelkeep::VideoFile& video) const
{
    std::size_t seed = 0;
    const std::hash<reelkeep::SharedText> ofText;
    reelkeep::combine(seed, ofText(video.id));
    reelkeep::combine(seed, std::hash<reelkeep::Location>{}(video.url));
    reelkeep::combine(seed, ofText(video.relativePath));
    reelkeep::combine(seed, ofText(video.fileName));
    reelkeep::combine(seed, std::hash<std::int64_t>{}(video.size));
    reelkeep::combine(seed, video.createdAt ? 1U : 0U);
    if (video.createdAt)
        reelkeep::combine(seed, std::hash<std::int64_t>{}(video.createdAt->time_since_epoch().count()));
    return seed;
}
