#pragma once

#include "Fixtures/AnnouncementRecorder.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/MemoryFileManager.h"
#include "Fixtures/ScriptedFolderDialogs.h"
#include "VideoSyncViewModel.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace reelkeep {

using Lines = std::vector<std::string>;

/// The verdict on a card from which nothing is missing.
inline const std::string allSaved =
    "Todo lo de la camara ya esta guardado en las ubicaciones revisadas. Los videos extra se ignoran.";

std::vector<std::string> relativePaths(const VideoList& videos);

/// A session on files in memory, with dialogs that the test answers.
class SessionTest : public testing::Test {
protected:
    ~SessionTest() override;

    void chooseSource(const std::string& path);
    void chooseDestination(const std::string& path);
    void addReviewFolders(const std::vector<std::string>& paths);
    /// The user's answer to the next dialog.
    void willChoose(const std::vector<std::string>& paths) { dialogs.willChoose(paths); }
    void willCancel() { dialogs.willCancel(); }

    /// Runs a workflow to its end.
    void scan();
    void copy();
    bool becomesIdle();

    std::shared_ptr<MemoryFileManager> files = std::make_shared<MemoryFileManager>();
    ScriptedFolderDialogs dialogs;
    std::unique_ptr<VideoSyncViewModel> session = std::make_unique<VideoSyncViewModel>(dialogs.factory(), files);
};

} // namespace reelkeep
