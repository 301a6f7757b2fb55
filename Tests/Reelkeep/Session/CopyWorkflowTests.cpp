#include "Files/FileError.h"
#include "Fixtures/SessionTest.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Unprivileged.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace reelkeep {
namespace {

class CopyWorkflow : public SessionTest {
protected:
    /// A card whose videos are missing on the destination, found so by a scan.
    void prepare(const Lines& videosOfTheCard)
    {
        for (const std::string& path : videosOfTheCard)
            files->add("/card/" + path);
        chooseSource("/card");
        chooseDestination("/A");
        scan();
    }

    /// Leaves out what the rescan adds.
    static Lines statusTexts(const Lines& writes)
    {
        const std::string prefix = "statusMessage = ";
        Lines texts;
        for (const std::string& line : writes) {
            if (line.compare(0, prefix.size(), prefix) == 0)
                texts.push_back(line.substr(prefix.size()));
        }
        return texts;
    }
};

TEST_F(CopyWorkflow, needsASource)
{
    chooseDestination("/A");
    const AnnouncementRecorder recorder(*session);
    session->copyMissingVideos();
    EXPECT_EQ(recorder.writes(), (Lines{"statusMessage = Selecciona primero la carpeta de origen."}));
}

TEST_F(CopyWorkflow, looksForTheSourceFirst)
{
    session->copyMissingVideos();
    EXPECT_EQ(session->statusMessage(), "Selecciona primero la carpeta de origen.");
}

TEST_F(CopyWorkflow, needsADestination)
{
    prepare({"a.mov"});
    session->setCopyDestinationFolder(std::nullopt);
    const AnnouncementRecorder recorder(*session);
    session->copyMissingVideos();
    letEventsPass();
    EXPECT_EQ(recorder.writes(), (Lines{"statusMessage = Selecciona primero el HD o carpeta donde quieres copiar."}));
}

TEST_F(CopyWorkflow, needsSomethingMissing)
{
    chooseSource("/card");
    chooseDestination("/A");
    const AnnouncementRecorder recorder(*session);
    session->copyMissingVideos();
    letEventsPass();
    EXPECT_EQ(recorder.writes(), (Lines{"statusMessage = No hay videos pendientes para copiar."}));
}

TEST_F(CopyWorkflow, writesItsFieldsInTheirOrder)
{
    prepare({"DCIM/a.mov", "DCIM/b.mov"});
    const AnnouncementRecorder recorder(*session);
    copy();
    EXPECT_EQ(recorder.writes(),
              (Lines{"isCopying = true",
                     "nothing",
                     "statusMessage = Copiando al HD solo los videos que faltan de la camara...", //
                     "nothing",
                     "statusMessage = Copiando 0/2: a.mov", //
                     "progressValue = 0.50",
                     "statusMessage = Copiando 1/2: b.mov", //
                     "progressValue = 1.00",
                     "statusMessage = Copiando 2/2: b.mov",
                     "statusMessage = Copia completada. 2 videos de la camara copiados al HD, 0 omitidos.",
                     "isScanning = true",
                     "statusMessage = Escaneando videos...",
                     "nothing",
                     "destinationVideos = [DCIM/a.mov, DCIM/b.mov]",
                     "missingVideos = []",
                     "lastScanDate = now",
                     "statusMessage = " + allSaved,
                     "isScanning = false",
                     "isCopying = false",
                     "progressValue = 0.00"}));
}

TEST_F(CopyWorkflow, reportsEveryFileAndEndsOnTheVerdict)
{
    prepare({"1.mov", "2.mov", "3.mov", "4.mov", "5.mov"});
    const AnnouncementRecorder recorder(*session);
    copy();
    EXPECT_EQ(statusTexts(recorder.writes()),
              (Lines{"Copiando al HD solo los videos que faltan de la camara...", "Copiando 0/5: 1.mov",
                     "Copiando 1/5: 2.mov", "Copiando 2/5: 3.mov", "Copiando 3/5: 4.mov", "Copiando 4/5: 5.mov",
                     "Copiando 5/5: 5.mov", "Copia completada. 5 videos de la camara copiados al HD, 0 omitidos.",
                     "Escaneando videos...", allSaved}));
    const Lines writes = recorder.writes();
    Lines progress;
    std::copy_if(writes.begin(), writes.end(), std::back_inserter(progress),
                 [](const std::string& line) { return line.rfind("progressValue", 0) == 0; });
    EXPECT_EQ(progress, (Lines{"progressValue = 0.20", "progressValue = 0.40", "progressValue = 0.60",
                               "progressValue = 0.80", "progressValue = 1.00", "progressValue = 0.00"}));
    EXPECT_TRUE(session->missingVideos().empty());
    EXPECT_FALSE(session->isCopying());
    EXPECT_EQ(session->progressValue(), 0.0);
}

TEST_F(CopyWorkflow, countsWhatItCopiedAndWhatItSkipped)
{
    prepare({"1.mov", "2.mov", "3.mov", "4.mov"});
    files->add("/A/2.mov", 7);
    const AnnouncementRecorder recorder(*session);
    copy();
    const Lines texts = statusTexts(recorder.writes());
    EXPECT_EQ(
        std::count(texts.begin(), texts.end(), "Copia completada. 3 videos de la camara copiados al HD, 1 omitidos."),
        1);
}

TEST_F(CopyWorkflow, stillListsAVideoWhoseNameIsTakenInFlatMode)
{
    files->add("/card/X/clip.mov", 1);
    files->add("/card/Y/clip.mov", 2);
    chooseSource("/card");
    chooseDestination("/A");
    scan();
    session->setPreserveFolderStructure(false);
    const AnnouncementRecorder recorder(*session);
    copy();
    const Lines texts = statusTexts(recorder.writes());
    EXPECT_EQ(
        std::count(texts.begin(), texts.end(), "Copia completada. 1 videos de la camara copiados al HD, 1 omitidos."),
        1);
    EXPECT_EQ(relativePaths(session->missingVideos()), (Lines{"Y/clip.mov"}));
    EXPECT_TRUE(files->has("/A/clip.mov"));
}

TEST_F(CopyWorkflow, keepsTheFoldersWhereItIsToldTo)
{
    prepare({"DCIM/100/clip.mov"});
    copy();
    EXPECT_TRUE(files->has("/A/DCIM/100/clip.mov"));
}

TEST_F(CopyWorkflow, doesNotNoticeThatTheSwitchIsTurnedWhileItRuns)
{
    prepare({"DCIM/a.mov", "DCIM/b.mov"});
    files->close();
    session->copyMissingVideos();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    session->setPreserveFolderStructure(false);
    files->open();
    EXPECT_TRUE(becomesIdle());
    EXPECT_TRUE(files->has("/A/DCIM/a.mov"));
    EXPECT_TRUE(files->has("/A/DCIM/b.mov"));
}

TEST_F(CopyWorkflow, copiesFromTheSourceAndToTheDestinationOfItsStart)
{
    prepare({"a.mov"});
    files->add("/other card/a.mov", 5);
    chooseSource("/other card");
    session->setCopyDestinationFolder(Location("/B"));
    files->close();
    session->copyMissingVideos();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    chooseSource("/third card");
    session->setCopyDestinationFolder(Location("/C"));
    files->open();
    EXPECT_TRUE(becomesIdle());
    EXPECT_TRUE(files->has("/B/a.mov"));
    EXPECT_FALSE(files->has("/C/a.mov"));
    // The rescan works on the choices of its own start.
    EXPECT_EQ(files->walkedRoots(), (Lines{"/card", "/A", "/third card", "/C", "/A"}));
}

TEST_F(CopyWorkflow, endsAtTheFirstFailureWithoutARescan)
{
    prepare({"1.mov", "2.mov", "3.mov"});
    const Snapshot before = snapshotWithout("statusMessage", *session);
    files->failBelow("/A/2.mov", "Disco lleno");
    const AnnouncementRecorder recorder(*session);
    copy();
    const std::string failure =
        std::string("No he podido copiar los videos: ") + FileError("/A/2.mov", EIO, "Disco lleno").what();
    EXPECT_EQ(recorder.writes(), (Lines{"isCopying = true", "nothing",
                                        "statusMessage = Copiando al HD solo los videos que faltan de la camara...", //
                                        "nothing", "statusMessage = Copiando 0/3: 1.mov",                            //
                                        "progressValue = 0.33", "statusMessage = Copiando 1/3: 2.mov",
                                        "statusMessage = " + failure, "isCopying = false", "progressValue = 0.00"}));
    EXPECT_TRUE(files->has("/A/1.mov"));
    EXPECT_EQ(relativePaths(session->missingVideos()), (Lines{"1.mov", "2.mov", "3.mov"}));
    EXPECT_EQ(snapshotWithout("statusMessage", *session), before);
}

TEST_F(CopyWorkflow, failsInTheUsersWordsWithoutAThread)
{
    const std::string status = runUnprivileged([this] {
        prepare({"a.mov"});
        allowNoMoreThreads();
        session->copyMissingVideos();
        return becomesIdle() ? session->statusMessage() : "still copying";
    });
    EXPECT_EQ(status, "No he podido copiar los videos: No quedan hilos para empezar el trabajo. "
                      "Cierra otros programas y vuelve a intentarlo.");
}

TEST_F(CopyWorkflow, endsOnTheTextOfARescanThatFails)
{
    prepare({"a.mov"});
    addReviewFolders({"/B"});
    files->failBelow("/B", "Disco averiado");
    const AnnouncementRecorder recorder(*session);
    copy();
    const Lines writes = recorder.writes();
    ASSERT_GE(writes.size(), 4U);
    EXPECT_EQ(Lines(writes.end() - 4, writes.end()),
              (Lines{std::string("statusMessage = No he podido escanear las carpetas: ") +
                         FileError("/B", EIO, "Disco averiado").what(),
                     "isScanning = false", "isCopying = false", "progressValue = 0.00"}));
    EXPECT_EQ(relativePaths(session->missingVideos()), (Lines{"a.mov"}));
}

TEST_F(CopyWorkflow, endsWhereTheRescanLacksAChoice)
{
    prepare({"a.mov"});
    files->close();
    session->copyMissingVideos();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    session->setCopyDestinationFolder(std::nullopt);
    files->open();
    EXPECT_TRUE(becomesIdle());
    EXPECT_EQ(session->statusMessage(), "Selecciona primero el HD o carpeta donde quieres copiar.");
    EXPECT_EQ(session->progressValue(), 0.0);
}

TEST_F(CopyWorkflow, isCopyingAndScanningAtOnceDuringTheRescan)
{
    prepare({"a.mov"});
    bool wasBoth = false;
    QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange, session.get(), [&] {
        if (session->isCopying() && session->isScanning()) {
            wasBoth = true;
            EXPECT_EQ(session->progressValue(), 1.0);
            EXPECT_FALSE(session->canScan());
            EXPECT_FALSE(session->canCopy());
        }
    });
    copy();
    EXPECT_TRUE(wasBoth);
}

TEST_F(CopyWorkflow, showsNamesAsTheyAre)
{
    prepare({"<b>%1%2.mov", "x\xFF.mov"});
    const AnnouncementRecorder recorder(*session);
    copy();
    const Lines texts = statusTexts(recorder.writes());
    EXPECT_EQ(texts[1], "Copiando 0/2: <b>%1%2.mov");
    EXPECT_EQ(texts[2], "Copiando 1/2: x\xFF.mov");
    EXPECT_TRUE(files->has("/A/x\xFF.mov"));
}

TEST_F(CopyWorkflow, savesTheVideosOfARealCard)
{
    const TemporaryFolder card;
    const TemporaryFolder disk;
    card.file("DCIM/100CANON/MVI_0001.MOV", "saved");
    card.file("DCIM/100CANON/MVI_0002.MOV", "missing");
    card.file("DCIM/100CANON/MVI_0002.THM");
    disk.file("archive/mvi_0001.mov", "saved");
    session = std::make_unique<VideoSyncViewModel>(dialogs.factory());
    chooseSource(card.location().path());
    chooseDestination(disk.location().path());
    scan();
    EXPECT_EQ(relativePaths(session->missingVideos()), (Lines{"DCIM/100CANON/MVI_0002.MOV"}));
    copy();
    EXPECT_EQ(session->statusMessage(), allSaved);
    EXPECT_EQ(contentOf(disk / "DCIM/100CANON/MVI_0002.MOV"), "missing");
    EXPECT_EQ(everythingBelow(disk.location()),
              (Lines{"DCIM", "DCIM/100CANON", "DCIM/100CANON/MVI_0002.MOV", "archive", "archive/mvi_0001.mov"}));
}

TEST_F(CopyWorkflow, tellsItsWorkerToStopWhenTheSessionEnds)
{
    prepare({"a.mov", "b.mov"});
    files->close();
    session->copyMissingVideos();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    session.reset();
    EXPECT_EQ(files->stoppedCount(), 1);
    EXPECT_FALSE(files->has("/A/a.mov"));
    letEventsPass();
}

TEST_F(CopyWorkflow, dropsWhatAWorkerDeliversThatOutlivesTheSession)
{
    prepare({"a.mov", "b.mov"});
    files->hang();
    session->copyMissingVideos();
    ASSERT_TRUE(waitUntil([&] { return files->waitingCount() == 1; }));
    session.reset();
    files->open();
    EXPECT_TRUE(waitUntil([&] { return files.use_count() == 1; }));
    letEventsPass();
}

TEST_F(CopyWorkflow, survivesItsEndAtAnyAnnouncement)
{
    constexpr int writesOfACopy = 18; // Of one video, with its rescan.
    for (int last = 1; last <= writesOfACopy; ++last) {
        session = std::make_unique<VideoSyncViewModel>(dialogs.factory(), files);
        files->remove("/A/a.mov");
        prepare({"a.mov"});
        int announced = 0;
        QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange, [&] {
            if (++announced == last)
                session.reset();
        });
        session->copyMissingVideos();
        EXPECT_TRUE(waitUntil([&] { return !session; })) << last;
        letEventsPass();
        EXPECT_EQ(announced, last);
    }
}

} // namespace
} // namespace reelkeep
