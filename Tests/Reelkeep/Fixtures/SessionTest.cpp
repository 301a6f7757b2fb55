#include "Fixtures/SessionTest.h"

namespace reelkeep {

std::vector<Location> locations(const std::vector<std::string>& paths)
{
    return {paths.begin(), paths.end()};
}

std::vector<std::string> relativePaths(const VideoList& videos)
{
    std::vector<std::string> paths;
    for (const VideoFile& video : videos)
        paths.push_back(video.relativePath);
    return paths;
}

SessionTest::~SessionTest()
{
    files->open(); // Nothing may be left waiting behind a test.
    EXPECT_EQ(dialogs.openCount, 0);
}

void SessionTest::chooseSource(const std::string& path)
{
    willChoose({path});
    session->chooseSourceFolder();
}

void SessionTest::chooseDestination(const std::string& path)
{
    willChoose({path});
    session->chooseCopyDestinationFolder();
}

void SessionTest::addReviewFolders(const std::vector<std::string>& paths)
{
    willChoose(paths);
    session->addDestinationReviewFolders();
}

void SessionTest::willChoose(const std::vector<std::string>& paths)
{
    dialogs.answers.push_back({.response = FolderDialog::Response::ok, .chosen = locations(paths), .whileOpen = {}});
}

void SessionTest::willCancel()
{
    // The dialog may still report what was marked in it.
    dialogs.answers.push_back(
        {.response = FolderDialog::Response::cancel, .chosen = locations({"/marked"}), .whileOpen = {}});
}

void SessionTest::scan()
{
    session->scanFolders();
    ASSERT_TRUE(becomesIdle());
}

void SessionTest::copy()
{
    session->copyMissingVideos();
    ASSERT_TRUE(becomesIdle());
}

bool SessionTest::becomesIdle()
{
    return waitUntil([this] { return !session->isScanning() && !session->isCopying(); });
}

} // namespace reelkeep
