#include "Fixtures/SessionTest.h"

namespace reelkeep {

std::vector<std::string> relativePaths(const VideoList& videos)
{
    std::vector<std::string> paths;
    for (const VideoFile& video : videos)
        paths.push_back(video.relativePath);
    return paths;
}

SessionTest::~SessionTest()
{
    files->open(); // Nothing may be left waiting after a test.
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
