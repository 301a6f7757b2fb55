#pragma once

#include "VideoSyncModels.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace reelkeep {

/// Files as cameras name them, the same at each call: a card's or an archive's, videos and what lies beside them.
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

/// Makes a tree of `count` files that take no room on the disk.
/// Throws std::system_error.
void makeTree(const Location& root, SampleKind kind, std::size_t count);

/// One record, as a scan would make it, for each number from `begin` up to `end`.
std::vector<VideoFile> sampleVideos(SampleKind kind, std::size_t begin, std::size_t end);

} // namespace reelkeep
