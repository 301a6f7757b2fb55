#include "VideoSyncViewModel.h"

#include "Fixtures/SessionTest.h"

#include <gtest/gtest.h>

#include <thread>

namespace reelkeep {
namespace {

class VideoSyncViewModelTest : public SessionTest {};

TEST_F(VideoSyncViewModelTest, beginsWithTheInitialValues)
{
    EXPECT_EQ(session->sourceFolder(), std::nullopt);
    EXPECT_EQ(session->copyDestinationFolder(), std::nullopt);
    EXPECT_EQ(session->destinationReviewFolders(), locations({}));
    EXPECT_TRUE(session->sourceVideos().empty());
    EXPECT_TRUE(session->destinationVideos().empty());
    EXPECT_TRUE(session->missingVideos().empty());
    EXPECT_TRUE(session->preserveFolderStructure());
    EXPECT_FALSE(session->isScanning());
    EXPECT_FALSE(session->isCopying());
    EXPECT_EQ(session->progressValue(), 0.0);
    EXPECT_EQ(session->statusMessage(),
              "Selecciona la carpeta de la camara, el destino de copia y los HDs o carpetas a revisar.");
    EXPECT_EQ(session->lastScanDate(), std::nullopt);
}

TEST_F(VideoSyncViewModelTest, derivesTheInitialTextsAndRules)
{
    EXPECT_FALSE(session->canScan());
    EXPECT_FALSE(session->canCopy());
    EXPECT_EQ(session->effectiveDestinationReviewFolders(), locations({}));
    EXPECT_EQ(session->destinationReviewSummary(), "Sin seleccionar");
    EXPECT_EQ(session->activeCopyDestinationName(), "Sin seleccionar");
    EXPECT_EQ(session->copyDestinationSelectionPath(), "");
    EXPECT_EQ(session->cameraVideosAlreadyInDestinationCount(), 0U);
}

TEST_F(VideoSyncViewModelTest, usesTheRealFileManagerIfNoneIsGiven)
{
    VideoSyncViewModel real(dialogs.factory());
    willChoose({"/missing folder of a test"});
    real.chooseSourceFolder();
    willChoose({"/missing folder of a test"});
    real.chooseCopyDestinationFolder();
    real.scanFolders();
    EXPECT_TRUE(waitUntil([&] { return !real.isScanning(); }));
    EXPECT_NE(real.lastScanDate(), std::nullopt);
}

TEST_F(VideoSyncViewModelTest, announcesAWriteBeforeItStoresTheValue)
{
    const AnnouncementRecorder recorder(*session);
    bool seen = true;
    QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange,
                     [&] { seen = session->preserveFolderStructure(); });
    session->setPreserveFolderStructure(false);
    EXPECT_TRUE(seen);
    EXPECT_FALSE(session->preserveFolderStructure());
    session->setCopyDestinationFolder(Location("/A"));
    EXPECT_EQ(recorder.writes(), (Lines{"preserveFolderStructure = false", "copyDestinationFolder = /A"}));
}

TEST_F(VideoSyncViewModelTest, announcesTheWriteOfAnEqualValueToo)
{
    const AnnouncementRecorder recorder(*session);
    session->setPreserveFolderStructure(true);
    session->setCopyDestinationFolder(std::nullopt);
    EXPECT_EQ(recorder.writes(), (Lines{"nothing", "nothing"}));
}

TEST_F(VideoSyncViewModelTest, setsTheDestinationAndNothingElse)
{
    session->setCopyDestinationFolder(Location("/A"));
    EXPECT_EQ(session->copyDestinationFolder(), Location("/A"));
    EXPECT_EQ(session->destinationReviewFolders(), locations({}));
    session->setCopyDestinationFolder(std::nullopt);
    EXPECT_EQ(session->copyDestinationFolder(), std::nullopt);
}

TEST_F(VideoSyncViewModelTest, reviewsTheDestinationFirstAndEveryFolderOnce)
{
    session->setCopyDestinationFolder(Location("/Volumes/A"));
    addReviewFolders({"/Volumes/B", "/Volumes/A", "/Volumes/B"});
    EXPECT_EQ(session->destinationReviewFolders(), locations({"/Volumes/B", "/Volumes/A", "/Volumes/B"}));
    EXPECT_EQ(session->effectiveDestinationReviewFolders(), locations({"/Volumes/A", "/Volumes/B"}));
    EXPECT_EQ(session->destinationReviewSummary(), "2 ubicaciones seleccionadas");
}

TEST_F(VideoSyncViewModelTest, reviewsTheDestinationAlone)
{
    session->setCopyDestinationFolder(Location("/Volumes/A"));
    EXPECT_EQ(session->effectiveDestinationReviewFolders(), locations({"/Volumes/A"}));
    EXPECT_EQ(session->destinationReviewSummary(), "/Volumes/A");
}

TEST_F(VideoSyncViewModelTest, cannotScanReviewFoldersWithoutADestination)
{
    chooseSource("/card");
    addReviewFolders({"/Volumes/A", "/Volumes/B"});
    EXPECT_EQ(session->effectiveDestinationReviewFolders(), locations({"/Volumes/A", "/Volumes/B"}));
    EXPECT_EQ(session->destinationReviewSummary(), "2 ubicaciones seleccionadas");
    EXPECT_FALSE(session->canScan());
}

TEST_F(VideoSyncViewModelTest, countsLocationsByTheirPathsOnly)
{
    addReviewFolders({"/Volumes/A", "/volumes/a", "/Volumes/./A"});
    EXPECT_EQ(session->destinationReviewSummary(), "3 ubicaciones seleccionadas");
}

TEST_F(VideoSyncViewModelTest, summarisesOneReviewFolderByItsPath)
{
    addReviewFolders({"/Volumes/B"});
    EXPECT_EQ(session->destinationReviewSummary(), "/Volumes/B");
}

TEST_F(VideoSyncViewModelTest, namesTheDestinationByItsLastComponent)
{
    session->setCopyDestinationFolder(Location("/Volumes/Disco 1"));
    EXPECT_EQ(session->activeCopyDestinationName(), "Disco 1");
    EXPECT_EQ(session->copyDestinationSelectionPath(), "/Volumes/Disco 1");
}

TEST_F(VideoSyncViewModelTest, namesADestinationWithoutLastComponentByItsPath)
{
    session->setCopyDestinationFolder(Location("/"));
    EXPECT_EQ(session->activeCopyDestinationName(), "/");
    EXPECT_EQ(session->copyDestinationSelectionPath(), "/");
}

TEST_F(VideoSyncViewModelTest, canScanOnceSourceAndDestinationAreChosen)
{
    chooseSource("/card");
    EXPECT_FALSE(session->canScan());
    session->setCopyDestinationFolder(Location("/A"));
    EXPECT_TRUE(session->canScan());
}

TEST_F(VideoSyncViewModelTest, cannotScanWithoutASource)
{
    session->setCopyDestinationFolder(Location("/A"));
    EXPECT_FALSE(session->canScan());
}

TEST_F(VideoSyncViewModelTest, canCopyOnceSomethingIsMissing)
{
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    EXPECT_FALSE(session->canCopy()); // Nothing is missing.
    files->add("/card/a.mov");
    scan();
    EXPECT_TRUE(session->canCopy());
    session->setCopyDestinationFolder(std::nullopt);
    EXPECT_FALSE(session->canCopy());
}

TEST_F(VideoSyncViewModelTest, canNeitherScanNorCopyWhileItScans)
{
    files->add("/card/a.mov");
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    session->scanFolders();
    EXPECT_TRUE(session->isScanning());
    EXPECT_FALSE(session->canScan());
    EXPECT_FALSE(session->canCopy());
    EXPECT_TRUE(becomesIdle());
    EXPECT_TRUE(session->canScan());
    EXPECT_TRUE(session->canCopy());
}

TEST_F(VideoSyncViewModelTest, canNeitherScanNorCopyWhileItCopies)
{
    files->add("/card/a.mov");
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    session->copyMissingVideos();
    EXPECT_TRUE(session->isCopying());
    EXPECT_FALSE(session->isScanning());
    EXPECT_FALSE(session->canScan());
    EXPECT_FALSE(session->canCopy());
    EXPECT_TRUE(becomesIdle());
}

TEST_F(VideoSyncViewModelTest, countsTheVideosThatAreSaved)
{
    files->add("/card/a.mov");
    files->add("/card/b.mov");
    files->add("/card/c.mov");
    files->add("/A/C.MOV");
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    EXPECT_EQ(session->cameraVideosAlreadyInDestinationCount(), 1U);
}

TEST_F(VideoSyncViewModelTest, neverCountsFewerThanZeroSavedVideos)
{
    for (int i = 0; i < 12; ++i)
        files->add("/card/" + std::to_string(i) + ".mov");
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    files->remove("/card/0.mov");
    files->remove("/card/1.mov");
    bool wasCounted = false;
    // Between two writes the lists come from different scans.
    QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange, session.get(), [&] {
        if (session->sourceVideos().size() != 10 || session->missingVideos().size() != 12)
            return;
        EXPECT_EQ(session->cameraVideosAlreadyInDestinationCount(), 0U);
        wasCounted = true;
    });
    scan();
    EXPECT_TRUE(wasCounted);
}

TEST_F(VideoSyncViewModelTest, survivesASlotThatDestroysIt)
{
    QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange, [&] { session.reset(); });
    session->setCopyDestinationFolder(Location("/A"));
    EXPECT_EQ(session, nullptr);
}

/// Every operation of the session, called from another thread than its own.
using Call = void (*)(VideoSyncViewModel&);
class VideoSyncViewModelDeathTest : public testing::TestWithParam<Call> {};

TEST_P(VideoSyncViewModelDeathTest, stopsTheProgramOutsideTheInterfaceThread)
{
    EXPECT_DEATH(
        {
            VideoSyncViewModel session([] { return std::unique_ptr<FolderDialog>(); });
            std::thread([&] { GetParam()(session); }).join();
        },
        "outside the interface thread");
}

TEST(VideoSyncViewModelEndDeathTest, stopsTheProgramWhenItEndsOutsideTheInterfaceThread)
{
    EXPECT_DEATH(
        {
            auto session = std::make_unique<VideoSyncViewModel>([] { return std::unique_ptr<FolderDialog>(); });
            std::thread([&] { session.reset(); }).join();
        },
        "outside the interface thread");
}

INSTANTIATE_TEST_SUITE_P(everyOperation, VideoSyncViewModelDeathTest,
                         testing::Values([](VideoSyncViewModel& session) { session.statusMessage(); },
                                         [](VideoSyncViewModel& session) { session.destinationReviewSummary(); },
                                         [](VideoSyncViewModel& session) { session.canScan(); },
                                         [](VideoSyncViewModel& session) { session.setPreserveFolderStructure(false); },
                                         [](VideoSyncViewModel& session) { session.chooseSourceFolder(); },
                                         [](VideoSyncViewModel& session) { session.addDestinationReviewFolders(); },
                                         [](VideoSyncViewModel& session) { session.useOnlyCopyDestinationForReview(); },
                                         [](VideoSyncViewModel& session) {
                                             session.removeDestinationReviewFolder(Location("/A"));
                                         },
                                         [](VideoSyncViewModel& session) { session.scanFolders(); },
                                         [](VideoSyncViewModel& session) { session.stopWorkers(); },
                                         [](VideoSyncViewModel& session) { session.copyMissingVideos(); }));

} // namespace
} // namespace reelkeep
