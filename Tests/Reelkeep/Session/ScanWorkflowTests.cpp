#include "Files/FileError.h"
#include "Fixtures/SessionTest.h"
#include "Fixtures/Unprivileged.h"

#include <gtest/gtest.h>

#include <chrono>

namespace reelkeep {
namespace {

class ScanWorkflow : public SessionTest {
protected:
    /// A card with two videos, one of them on disk /A, which is the destination; /B is reviewed too.
    void prepare()
    {
        files->add("/card/DCIM/a.mov");
        files->add("/card/DCIM/b.mov");
        files->add("/A/a.mov");
        files->add("/B/extra.mov");
        chooseSource("/card");
        chooseDestination("/A");
        addReviewFolders({"/B"});
    }
};

TEST_F(ScanWorkflow, needsASource)
{
    chooseDestination("/A");
    const AnnouncementRecorder recorder(*session);
    session->scanFolders();
    EXPECT_EQ(recorder.writes(), (Lines{"statusMessage = Selecciona primero la carpeta de origen."}));
}

TEST_F(ScanWorkflow, checksTheSourceBeforeTheDestination)
{
    session->scanFolders();
    EXPECT_EQ(session->statusMessage(), "Selecciona primero la carpeta de origen.");
}

TEST_F(ScanWorkflow, needsADestination)
{
    chooseSource("/card");
    addReviewFolders({"/B"});
    const AnnouncementRecorder recorder(*session);
    session->scanFolders();
    letEventsPass();
    EXPECT_EQ(recorder.writes(), (Lines{"statusMessage = Selecciona primero el HD o carpeta donde quieres copiar."}));
    EXPECT_EQ(files->walkedRoots(), Lines{});
}

TEST_F(ScanWorkflow, writesItsFieldsInTheirOrder)
{
    prepare();
    const AnnouncementRecorder recorder(*session);
    scan();
    EXPECT_EQ(
        recorder.writes(),
        (Lines{"isScanning = true", "statusMessage = Escaneando videos...", "sourceVideos = [DCIM/a.mov, DCIM/b.mov]",
               "destinationVideos = [a.mov, extra.mov]", "missingVideos = [DCIM/b.mov]", "lastScanDate = now",
               "statusMessage = He encontrado 1 videos de la camara que aun no estan en ninguna de las "
               "ubicaciones revisadas.",
               "isScanning = false"}));
}

TEST_F(ScanWorkflow, announcesEqualResultsToo)
{
    prepare();
    scan();
    const AnnouncementRecorder recorder(*session);
    scan();
    EXPECT_EQ(recorder.writes(),
              (Lines{"isScanning = true", "statusMessage = Escaneando videos...", "nothing", "nothing", "nothing",
                     "lastScanDate = now",
                     "statusMessage = He encontrado 1 videos de la camara que aun no estan en ninguna de las "
                     "ubicaciones revisadas.",
                     "isScanning = false"}));
}

TEST_F(ScanWorkflow, changesNothingElseWhileItRuns)
{
    prepare();
    scan();
    const Snapshot before = snapshot(*session);
    files->close();
    session->scanFolders();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    Snapshot expected = before;
    for (auto& field : expected) {
        if (field.first == "isScanning")
            field.second = "true";
        if (field.first == "statusMessage")
            field.second = "Escaneando videos...";
    }
    EXPECT_EQ(snapshot(*session), expected);
    files->open();
    EXPECT_TRUE(becomesIdle());
}

TEST_F(ScanWorkflow, walksTheSourceAndThenEveryReviewLocationInOrder)
{
    prepare();
    scan();
    EXPECT_EQ(files->walkedRoots(), (Lines{"/card", "/A", "/B"}));
}

TEST_F(ScanWorkflow, reviewsADestinationThatIsNotInTheList)
{
    files->add("/card/a.mov");
    files->add("/A/a.mov");
    chooseSource("/card");
    session->setCopyDestinationFolder(Location("/A"));
    scan();
    EXPECT_TRUE(session->missingVideos().empty());
    EXPECT_EQ(session->destinationVideos().size(), 1U);
}

TEST_F(ScanWorkflow, remembersWhenItsResultsWereApplied)
{
    prepare();
    const Date before = std::chrono::system_clock::now();
    scan();
    const Date after = std::chrono::system_clock::now();
    ASSERT_NE(session->lastScanDate(), std::nullopt);
    EXPECT_LE(before, *session->lastScanDate());
    EXPECT_GE(after, *session->lastScanDate());
}

TEST_F(ScanWorkflow, reportsAllSavedIfTheCameraHasNoVideos)
{
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    EXPECT_TRUE(session->missingVideos().empty());
    EXPECT_NE(session->lastScanDate(), std::nullopt);
    EXPECT_EQ(session->statusMessage(), allSaved);
}

TEST_F(ScanWorkflow, countsWhatIsMissing)
{
    for (const char* name : {"1", "2", "3", "4"})
        files->add(std::string("/card/") + name + ".mov");
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    EXPECT_EQ(session->statusMessage(),
              "He encontrado 4 videos de la camara que aun no estan en ninguna de las ubicaciones revisadas.");
}

TEST_F(ScanWorkflow, doesNotGroupTheDigitsOfACount)
{
    for (int i = 0; i < 1000; ++i)
        files->add("/card/" + std::to_string(i) + ".mov");
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    EXPECT_EQ(session->statusMessage(),
              "He encontrado 1000 videos de la camara que aun no estan en ninguna de las ubicaciones revisadas.");
}

TEST_F(ScanWorkflow, ignoresExtraVideosOnTheDisks)
{
    files->add("/card/a.mov");
    files->add("/A/a.mov");
    files->add("/A/extra.mov");
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    EXPECT_EQ(relativePaths(session->destinationVideos()), (Lines{"a.mov", "extra.mov"}));
    EXPECT_TRUE(session->missingVideos().empty());
    EXPECT_EQ(session->statusMessage(), allSaved);
}

TEST_F(ScanWorkflow, keepsThePreviousResultsIfAWalkFails)
{
    prepare();
    scan();
    const Snapshot before = snapshotWithout("statusMessage", *session);
    files->failBelow("/B", "Disco averiado");
    const AnnouncementRecorder recorder(*session);
    scan();
    ASSERT_EQ(recorder.count(), 4U);
    const Lines writes = recorder.writes();
    const std::string prefix = "statusMessage = No he podido escanear las carpetas: ";
    EXPECT_EQ(writes[2].substr(0, prefix.size()), prefix);
    EXPECT_EQ(writes[2].substr(prefix.size()), FileError("/B", EIO, "Disco averiado").what());
    EXPECT_EQ(writes[3], "isScanning = false");
    EXPECT_EQ(snapshotWithout("statusMessage", *session), before);
}

TEST_F(ScanWorkflow, failsIfTheSourceCannotBeRead)
{
    prepare();
    files->failBelow("/card", "Tarjeta retirada");
    scan();
    EXPECT_EQ(session->statusMessage(),
              std::string("No he podido escanear las carpetas: ") + FileError("/card", EIO, "Tarjeta retirada").what());
    EXPECT_EQ(session->lastScanDate(), std::nullopt);
}

TEST_F(ScanWorkflow, failsInTheUsersWordsIfMemoryRunsOut)
{
    prepare();
    files->exhaustMemory();
    scan();
    EXPECT_EQ(session->statusMessage(), "No he podido escanear las carpetas: No queda memoria.");
}

TEST_F(ScanWorkflow, failsInTheUsersWordsIfNoThreadCanStart)
{
    const std::string status = runUnprivileged([this] {
        prepare();
        allowNoMoreThreads();
        session->scanFolders();
        return becomesIdle() ? session->statusMessage() : "still scanning";
    });
    EXPECT_EQ(status, "No he podido escanear las carpetas: No quedan hilos para empezar el trabajo. "
                      "Cierra otros programas y vuelve a intentarlo.");
}

TEST_F(ScanWorkflow, usesTheChoicesFromItsStart)
{
    prepare();
    files->close();
    session->scanFolders();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    chooseSource("/other card");
    session->setCopyDestinationFolder(Location("/C"));
    session->removeDestinationReviewFolder(Location("/B"));
    files->open();
    EXPECT_TRUE(becomesIdle());
    EXPECT_EQ(files->walkedRoots(), (Lines{"/card", "/A", "/B"}));
}

TEST_F(ScanWorkflow, appliesTheResultsOfAllOverlappingScans)
{
    prepare();
    files->close();
    session->scanFolders();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    session->scanFolders();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 2; }));
    int finished = 0;
    int applied = 0;
    bool wasScanning = true;
    std::optional<Date> lastDate;
    QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange, session.get(), [&] {
        finished += wasScanning && !session->isScanning() ? 1 : 0;
        wasScanning = session->isScanning();
        applied += session->lastScanDate() != lastDate ? 1 : 0;
        lastDate = session->lastScanDate();
    });
    const AnnouncementRecorder recorder(*session);
    files->open();
    // Six writes each; the second one clears a flag that is already cleared.
    EXPECT_TRUE(waitUntil([&] { return recorder.count() == 12; }));
    const Lines writes = recorder.writes();
    EXPECT_EQ(writes[5], "isScanning = false");
    EXPECT_EQ(writes[9], "lastScanDate = now");
    EXPECT_EQ(writes[11], "nothing");
    EXPECT_EQ(applied, 2);
    EXPECT_EQ(finished, 1);
}

TEST_F(ScanWorkflow, stopsItsWorkerWhenTheSessionEnds)
{
    prepare();
    files->close();
    session->scanFolders();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    session.reset();
    EXPECT_EQ(files->stoppedCount(), 1);
    letEventsPass();
}

TEST_F(ScanWorkflow, dropsTheResultsOfAWorkerThatOutlivesTheSession)
{
    prepare();
    files->hang();
    session->scanFolders();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    session.reset();
    EXPECT_EQ(files->waitingCount(), 1);
    files->open();
    // The worker's reference to the files ends with it.
    EXPECT_TRUE(waitUntil([&] { return files.use_count() == 1; }));
    letEventsPass();
}

TEST_F(ScanWorkflow, survivesItsEndAtAnyAnnouncement)
{
    constexpr int writesOfAScan = 8;
    for (int last = 1; last <= writesOfAScan; ++last) {
        session = std::make_unique<VideoSyncViewModel>(dialogs.factory(), files);
        prepare();
        int announced = 0;
        QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange, [&] {
            if (++announced == last)
                session.reset();
        });
        session->scanFolders();
        EXPECT_TRUE(waitUntil([&] { return !session; })) << last;
        letEventsPass();
        EXPECT_EQ(announced, last);
    }
}

} // namespace
} // namespace reelkeep
