#pragma once

#include "VideoSyncModels.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace reelkeep {

/// A file as cameras name them, the same at each call: a video or a file beside one, on a card or in an archive.
struct Sample {
    std::string relativePath;
    std::int64_t size = 0; ///< Bytes; distinct for each number.
};

enum class SampleKind {
    card,   ///< Full folders of one camera.
    archive ///< Shoots by year, each with several cameras' clips and their sidecar files.
};

/// File number `number` of a tree.
Sample sample(SampleKind kind, std::size_t number);

/// Makes a tree of `count` sparse files.
/// Throws std::system_error.
void makeTree(const Location& root, SampleKind kind, std::size_t count);

/// One record, as a scan would make it, for each number from `begin` up to `end`.
std::vector<VideoFile> sampleVideos(SampleKind kind, std::size_t begin, std::size_t end);

} // namespace reelkeep
