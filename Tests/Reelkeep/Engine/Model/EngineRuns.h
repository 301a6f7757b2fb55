#pragma once

#include "Model/FileTree.h"
#include "Model/NaiveEngine.h"
#include "VideoSyncService.h"

#include <string>
#include <vector>

/// The engine at work on a tree, with results in the types of its model.
namespace reelkeep {

/// Paths in the tree, made absolute.
std::vector<std::string> placesOf(const std::vector<std::string>& relative, const FileTree& tree);

VideoList scan(const std::vector<std::string>& places);

/// Throws std::logic_error if the fields of a record contradict each other.
std::vector<naive::Video> plain(const VideoList& videos);
std::string textOf(const std::vector<naive::Video>& videos);

struct EngineCopy {
    std::vector<std::string> reports; ///< In the form of naive::Copy.
    CopySummary summary;
    bool failed = false;
};

EngineCopy copy(const VideoList& videos, const std::string& source, const std::string& destination,
                bool preservesStructure);

} // namespace reelkeep
